#pragma once

#include "L3/VrfName.h"
#include "Lumen/IntfId.h"
#include "Vrf/VrfId.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"

#include <vector>

namespace Ip {

// The addresses of one interface. An interface without a VRF record has no VRF id but the default VRF's name.
template <class AddrWithMask>
struct BasicIntfStatus {
   Vrf::VrfIdMap::VrfId vrfId = Vrf::VrfIdMap::noVrf;
   L3::VrfName vrfName;
   bool loopback = false;
   // The default address, 0.0.0.0/0 or ::/0, means that none is assigned.
   AddrWithMask primaryAddr;
   std::vector<AddrWithMask> secondaryAddr;

   // Calls function(address) for the primary address, when assigned, and then for each secondary one.
   template <class Function>
   void forEachAddr(Function&& function) const {
      if (primaryAddr != AddrWithMask()) {
         function(primaryAddr);
      }
      for (auto const& addr : secondaryAddr) {
         function(addr);
      }
   }
};

// The addresses of every interface in one address family; the families' own types derive from it. A lookup is one
// probe. Iteration order has no meaning.
template <class AddrWithMask>
class BasicStatus : public Zam::PtrInterface {
 public:
   using IntfStatus = BasicIntfStatus<AddrWithMask>;
   using IntfStatuses = Zam::HashMap<Lumen::IntfId, IntfStatus>;

   IntfStatuses const& intfStatus() const noexcept { return intfStatus_; }
   // Null when the interface has no such addresses.
   IntfStatus const* intfStatus(Lumen::IntfId const& intfId) const { return intfStatus_.find(intfId); }
   void intfStatusIs(Lumen::IntfId const& intfId, IntfStatus status) {
      intfStatus_.insertOrReplace(intfId, std::move(status));
   }
   void intfStatusDel(Lumen::IntfId const& intfId) { intfStatus_.erase(intfId); }

 private:
   IntfStatuses intfStatus_;
};

}  // namespace Ip
