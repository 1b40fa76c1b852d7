#pragma once

#include "Lumen/IntfId.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/MplsLabelOperation.h"
#include "Routing/NexthopGroup/NexthopGroupName.h"
#include "Routing/NexthopGroup/NexthopGroupType.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"
#include "Zam/Value.h"

namespace Routing::NexthopGroup {

// One way of a group: a next hop and what is put on the packet. A tunnel needs a destination, for which the box finds
// the next hop; whatever the type of its group does not use is empty.
struct NexthopGroupEntry : Zam::ValueType {
   Lumen::IpGenAddr nextHop{};
   Lumen::IntfId intfId{};
   Lumen::MplsLabelOperation labels{};
   Lumen::IpGenAddr tunnelSource{};
   Lumen::IpGenAddr tunnelDestination{};
   U32 tunnelKey = 0;  // of GRE, or the VNI of VXLAN; 0 is none
   U16 weight = 1;     // its share of the traffic, at least 1

   static constexpr auto zamDescription() {
      using E = NexthopGroupEntry;
      return Zam::describe<E>("Routing::NexthopGroup::NexthopGroupEntry", Zam::attribute("nextHop", &E::nextHop),
                              Zam::attribute("intfId", &E::intfId), Zam::attribute("labels", &E::labels),
                              Zam::attribute("tunnelSource", &E::tunnelSource),
                              Zam::attribute("tunnelDestination", &E::tunnelDestination),
                              Zam::attribute("tunnelKey", &E::tunnelKey), Zam::attribute("weight", &E::weight));
   }
};

// A configured group. Its entries have indexes, which need not be without gaps; traffic is spread over the entries.
class KIV_EXPORT NexthopGroupConfigEntry final : public Zam::PtrInterface {
 public:
   using Entries = Zam::OrderedMap<U32, NexthopGroupEntry>;

   // RangeError for what is no name of a group.
   NexthopGroupConfigEntry(std::string_view name, NexthopGroupType type) : name_(checkedName(name)), type_(type) {}
   std::string_view fwkType() const noexcept override { return "Routing::NexthopGroup::NexthopGroupConfigEntry"; }

   Zam::String const& name() const noexcept { return name_; }
   NexthopGroupType type() const noexcept { return type_; }
   void typeIs(NexthopGroupType type) noexcept { type_ = type; }

   Entries const& entry() const noexcept { return entry_; }
   // RangeError for a weight of 0.
   void entryIs(U32 index, NexthopGroupEntry const& entry) {
      if (entry.weight == 0) {
         throw Zam::RangeError("Routing::NexthopGroup::NexthopGroupEntry::weight < 1 not allowed");
      }
      entry_.insertOrReplace(index, entry);
   }
   void entryDel(U32 index) { entry_.erase(index); }

 private:
   Zam::String name_;
   NexthopGroupType type_;
   Entries entry_;
};

// The configured groups by name. Written by the configuration agent.
class KIV_EXPORT Config final : public Zam::PtrInterface {
 public:
   using NexthopGroups = Zam::OrderedMap<Zam::String, Zam::Ptr<NexthopGroupConfigEntry const>>;

   std::string_view fwkType() const noexcept override { return "Routing::NexthopGroup::Config"; }

   NexthopGroups const& nexthopGroup() const noexcept { return nexthopGroup_; }
   // Null when there is none of that name.
   Zam::Ptr<NexthopGroupConfigEntry const> nexthopGroup(Zam::String const& name) const {
      auto const* const found = nexthopGroup_.find(name);
      return found != nullptr ? *found : nullptr;
   }
   void nexthopGroupIs(Zam::Ptr<NexthopGroupConfigEntry const> const& group) {
      nexthopGroup_.insertOrReplace(group->name(), group);
   }
   void nexthopGroupDel(Zam::String const& name) { nexthopGroup_.erase(name); }

 private:
   NexthopGroups nexthopGroup_;
};

}  // namespace Routing::NexthopGroup
