#pragma once

#include "L3/VrfName.h"
#include "Vrf/VrfId.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"

#include <algorithm>
#include <optional>

namespace Vrf::VrfIdMap {

// The VRFs and their ids. Written by the VRF agent. A VRF that is deleted and made anew may be here twice for a while,
// under its old and its new id.
class KIV_EXPORT Status final : public Zam::PtrInterface {
 public:
   using VrfNames = Zam::OrderedMap<VrfId, L3::VrfName>;

   std::string_view fwkType() const noexcept override { return "Vrf::VrfIdMap::Status"; }

   VrfNames const& vrfName() const noexcept { return vrfName_; }
   // Null when there is no such VRF.
   L3::VrfName const* vrfName(VrfId vrfId) const { return vrfName_.find(vrfId); }
   // Looks at every VRF: for once per command, not once per route. The highest id is the newest.
   std::optional<VrfId> vrfId(L3::VrfName const& name) const {
      std::optional<VrfId> newest;
      for (auto const& [id, known] : vrfName_) {
         if (known == name) {
            newest = id;
         }
      }
      return newest;
   }

   void vrfNameIs(VrfId vrfId, L3::VrfName name) { vrfName_.insertOrReplace(vrfId, std::move(name)); }
   void vrfNameDel(VrfId vrfId) { vrfName_.erase(vrfId); }

 private:
   VrfNames vrfName_;
};

}  // namespace Vrf::VrfIdMap
