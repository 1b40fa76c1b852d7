#pragma once

#include "FlexCounters/ChipMask.h"
#include "Zam/Export.h"
#include "Zam/Value.h"

namespace Kiv {

// A flexible counter: its index, and the chips that have it.
struct KIV_EXPORT CounterIndex : Zam::ValueType {
   U64 counterIndex = 0;
   FlexCounters::ChipMask chipMask{};

   static constexpr auto zamDescription() {
      return Zam::describe<CounterIndex>("Kiv::CounterIndex",
                                         Zam::attribute("counterIndex", &CounterIndex::counterIndex),
                                         Zam::attribute("chipMask", &CounterIndex::chipMask));
   }
};

// What a counter has counted.
struct KIV_EXPORT CounterEntry : Zam::ValueType {
   U64 packets = 0;
   U64 bytes = 0;

   static constexpr auto zamDescription() {
      return Zam::describe<CounterEntry>("Kiv::CounterEntry", Zam::attribute("packets", &CounterEntry::packets),
                                         Zam::attribute("bytes", &CounterEntry::bytes));
   }
};

}  // namespace Kiv
