#pragma once

#include "L3/VrfName.h"
#include "Lumen/IntfId.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"

namespace L3 {

// The layer-3 configuration: which VRF each interface is put into. Written by the configuration. An interface that is
// not here belongs to the default VRF.
class KIV_EXPORT Config final : public Zam::PtrInterface {
 public:
   using IntfVrfs = Zam::HashMap<Lumen::IntfId, VrfName>;

   std::string_view fwkType() const noexcept override { return "L3::Config"; }

   IntfVrfs const& intfVrf() const noexcept { return intfVrf_; }
   VrfName intfVrf(Lumen::IntfId const& intfId) const {
      auto const* const vrfName = intfVrf_.find(intfId);
      return vrfName != nullptr ? *vrfName : VrfName();
   }
   void intfVrfIs(Lumen::IntfId const& intfId, VrfName vrfName) {
      intfVrf_.insertOrReplace(intfId, std::move(vrfName));
   }
   void intfVrfDel(Lumen::IntfId const& intfId) { intfVrf_.erase(intfId); }

 private:
   IntfVrfs intfVrf_;
};

}  // namespace L3
