#pragma once

#include "Routing/NexthopGroup/NexthopGroupId.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

namespace NexthopGroup {

// The nexthop groups that have an id. Written by the nexthop group agent. Names are unique; ids need not be while a
// group is being renamed.
class KIV_EXPORT EntryStatus final : public Zam::PtrInterface {
 public:
   using NexthopGroupId = Routing::NexthopGroup::NexthopGroupId;
   using NexthopGroupIds = Zam::OrderedMap<Zam::String, NexthopGroupId>;

   std::string_view fwkType() const noexcept override { return "NexthopGroup::EntryStatus"; }

   // The id of each group, in name order.
   NexthopGroupIds const& nexthopGroupId() const noexcept { return nexthopGroupId_; }
   // 0 when there is no group of that name.
   NexthopGroupId nexthopGroupNameToId(Zam::String const& name) const {
      auto const* const id = nexthopGroupId_.find(name);
      return id != nullptr ? *id : NexthopGroupId{0};
   }
   void nexthopGroupIdIs(Zam::String const& name, NexthopGroupId id) { nexthopGroupId_.insertOrReplace(name, id); }
   void nexthopGroupIdDel(Zam::String const& name) { nexthopGroupId_.erase(name); }

 private:
   NexthopGroupIds nexthopGroupId_;
};

}  // namespace NexthopGroup
