#pragma once

#include "L3/VrfName.h"
#include "Zam/Export.h"
#include "Zam/Ptr.h"

namespace L3 {

// The VRF that interfaces are configured into, by its name. The interfaces of one VRF share it.
class KIV_EXPORT VrfNameRef final : public Zam::PtrInterface {
 public:
   explicit VrfNameRef(VrfName vrfName) : vrfName_(std::move(vrfName)) {}
   std::string_view fwkType() const noexcept override { return "L3::VrfNameRef"; }

   VrfName const& vrfName() const noexcept { return vrfName_; }

 private:
   VrfName vrfName_;
};

}  // namespace L3
