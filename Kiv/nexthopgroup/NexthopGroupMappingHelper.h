#pragma once

#include "NexthopGroup/EntryStatus.h"
#include "Routing/NexthopGroup/Config.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Value.h"

namespace Kiv {

// The table of nexthop group ids and the names behind them. A null input is an empty one.
struct KIV_EXPORT NexthopGroupMappingHelper : Zam::ValueType {
   Zam::Ptr<Routing::NexthopGroup::Config const> nhgConfig{};
   Zam::Ptr<NexthopGroup::EntryStatus const> nhgEntryStatus{};
   Zam::OrderedMap<U32, Zam::String> nhgIdName{};

   // Fills nhgIdName from the configured groups and prints it. Of groups with one id, and those without an id share 0,
   // the last by name is there. False, and errno tells why, when the output is not complete.
   bool render(U32 fd, U32 fmt);

   static constexpr auto zamDescription() {
      using M = NexthopGroupMappingHelper;
      return Zam::describe<M>("Kiv::NexthopGroupMappingHelper", Zam::attribute("nhgConfig", &M::nhgConfig),
                              Zam::attribute("nhgEntryStatus", &M::nhgEntryStatus),
                              Zam::collection("nhgIdName", &M::nhgIdName));
   }
};

}  // namespace Kiv
