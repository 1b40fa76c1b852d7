#pragma once

#include "Lumen/IntfId.h"
#include "Vrf/VrfId.h"
#include "Zam/Export.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

namespace Interface {

// One interface as it is running. Written by the interface agent. It stays the same interface for its whole life.
class KIV_EXPORT IntfStatus final : public Zam::PtrInterface {
 public:
   explicit IntfStatus(Lumen::IntfId const& intfId) noexcept : intfId_(intfId) {}
   std::string_view fwkType() const noexcept override { return "Interface::IntfStatus"; }

   Lumen::IntfId const& intfId() const noexcept { return intfId_; }
   // The kernel's name of the device ("et1"), empty when there is none.
   Zam::String const& deviceName() const noexcept { return deviceName_; }
   void deviceNameIs(Zam::String name) { deviceName_ = std::move(name); }
   Vrf::VrfIdMap::VrfId vrfId() const noexcept { return vrfId_; }
   void vrfIdIs(Vrf::VrfIdMap::VrfId vrfId) noexcept { vrfId_ = vrfId; }

 private:
   Lumen::IntfId intfId_;
   Vrf::VrfIdMap::VrfId vrfId_ = Vrf::VrfIdMap::noVrf;
   Zam::String deviceName_;
};

}  // namespace Interface
