#pragma once

#include "Kiv/selection/RouteTables.h"
#include "Zam/HashMap.h"

#include <set>
#include <utility>

namespace Kiv {

// The addresses of a VRF's interfaces: routes to the box itself that users know about.
template <class Family>
class OwnAddresses {
 public:
   using VrfId = Vrf::VrfIdMap::VrfId;

   // Of all interfaces of the VRF.
   void record(RouteTables<Family> const& tables) {
      if (!tables.ipStatus) {
         return;
      }
      for (auto const& [intfId, status] : tables.ipStatus->intfStatus()) {
         if (status.vrfName == tables.vrfName) {
            status.forEachAddr([this, &intf = intfId, &state = status](auto const& address) {
               addressToIntf_.insertOrReplace(address, intf);
               if (Family::recordsLoopbacks && state.loopback) {
                  loopbackVrfPrefix_.emplace(state.vrfId, address.subnet());
               }
            });
         }
      }
   }

   // Whether the route's prefix is an address or a loopback of the VRF.
   bool has(typename Family::Route const& route, VrfId vrfId) const {
      auto const& prefix = route.prefix;
      return addressToIntf_.contains({prefix.address(), prefix.length()}) ||
             loopbackVrfPrefix_.contains({route.srcVrfId, prefix}) ||
             (route.srcVrfId == Vrf::VrfIdMap::noVrf && loopbackVrfPrefix_.contains({vrfId, prefix}));
   }

 private:
   Zam::HashMap<typename Family::AddrWithMask, Lumen::IntfId> addressToIntf_;
   std::set<std::pair<VrfId, typename Family::Prefix>> loopbackVrfPrefix_;
};

}  // namespace Kiv
