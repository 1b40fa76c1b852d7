#pragma once

#include "L3/VrfName.h"
#include "Routing/NexthopGroup/NexthopGroupId.h"
#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"

#include <algorithm>
#include <vector>

namespace Routing::Hardware {

// The nexthop groups of one VRF that the hardware forwards by, and which of their entries.
class KIV_EXPORT NexthopGroupVrfStatus final : public Zam::PtrInterface {
 public:
   using NexthopGroupId = Routing::NexthopGroup::NexthopGroupId;

   std::string_view fwkType() const noexcept override { return "Routing::Hardware::NexthopGroupVrfStatus"; }

   bool programmed(NexthopGroupId id) const { return entries_.contains(id); }
   bool programmed(NexthopGroupId id, U32 entry) const {
      auto const* const entries = entries_.find(id);
      return entries != nullptr && std::ranges::binary_search(*entries, entry);
   }
   // RangeError for the id 0, which no group in the hardware has.
   void programmedIs(NexthopGroupId id, std::vector<U32> entries) {
      if (id == 0) {
         throw Zam::RangeError("Routing::Hardware::NexthopGroupVrfStatus::programmed id 0 not allowed");
      }
      std::ranges::sort(entries);
      entries_.insertOrReplace(id, std::move(entries));
   }
   void programmedDel(NexthopGroupId id) { entries_.erase(id); }

 private:
   Zam::HashMap<NexthopGroupId, std::vector<U32>> entries_;
};

// The same of all VRFs. Written by the forwarding agent; a VRF that it has not dealt with yet is missing.
class KIV_EXPORT NexthopGroupStatus final : public Zam::PtrInterface {
 public:
   std::string_view fwkType() const noexcept override { return "Routing::Hardware::NexthopGroupStatus"; }

   // Null when there is none.
   Zam::Ptr<NexthopGroupVrfStatus const> vrfStatus(L3::VrfName const& vrfName) const {
      auto const* const found = vrfStatus_.find(vrfName);
      return found != nullptr ? Zam::Ptr<NexthopGroupVrfStatus const>(*found) : nullptr;
   }
   // The VRF's, which is made when it is not there.
   Zam::Ptr<NexthopGroupVrfStatus> vrfStatusIs(L3::VrfName const& vrfName) {
      if (!vrfStatus_.contains(vrfName)) {
         vrfStatus_.insertOrReplace(vrfName, Zam::makePtr<NexthopGroupVrfStatus>());
      }
      return *vrfStatus_.find(vrfName);
   }
   void vrfStatusDel(L3::VrfName const& vrfName) { vrfStatus_.erase(vrfName); }

 private:
   Zam::OrderedMap<L3::VrfName, Zam::Ptr<NexthopGroupVrfStatus>> vrfStatus_;
};

}  // namespace Routing::Hardware
