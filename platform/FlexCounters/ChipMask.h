#pragma once

#include "Zam/Value.h"

namespace FlexCounters {

// A set of forwarding chips, one bit for each; the lowest is chip 0.
struct ChipMask : Zam::ValueType {
   U64 chips = 0;

   static constexpr auto zamDescription() {
      return Zam::describe<ChipMask>("FlexCounters::ChipMask", Zam::attribute("chips", &ChipMask::chips));
   }
};

}  // namespace FlexCounters
