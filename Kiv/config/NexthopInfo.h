#pragma once

#include "Routing/Via.h"
#include "Zam/FlatMap.h"
#include "Zam/String.h"
#include "Zam/Value.h"

namespace Kiv {

// What is saved of one static route behind its prefix: the rest of its only line, or, when that is empty, the rest of
// one line for each via.
struct NexthopInfo : Zam::ValueType {
   Zam::String nexthopCmd{};
   Zam::FlatMap<Routing::Via, Zam::String> sortedVia{};

   static constexpr auto zamDescription() {
      return Zam::describe<NexthopInfo>("Kiv::NexthopInfo", Zam::attribute("nexthopCmd", &NexthopInfo::nexthopCmd),
                                        Zam::collection("sortedVia", &NexthopInfo::sortedVia));
   }

   void sortedViaIs(Routing::Via const& via, Zam::String text) { sortedVia.insertOrReplace(via, std::move(text)); }
   void sortedViaDel(Routing::Via const& via) { sortedVia.erase(via); }
   void sortedViaDelAll() noexcept { sortedVia.clear(); }
};

}  // namespace Kiv
