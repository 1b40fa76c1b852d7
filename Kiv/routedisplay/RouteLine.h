#pragma once

#include "Kiv/common/Family.h"
#include "Kiv/routedisplay/CachedFec.h"

#include <string_view>

namespace Kiv {

// What the line of one via shows; what is empty or null is left out. The texts belong to whoever fills it in.
struct ViaLine {
   std::string_view nexthop{};
   std::string_view interface {};
   bool backup = false;
   std::string_view egressVrf{};
   std::string_view interfaceDescription{};
   Lumen::MplsLabelOperation const* labelOperation = nullptr;
   Lumen::MplsLabel label{};
   Tunnel::CliSupport::CachedIpTunnelInfo const* ipTunnelInfo = nullptr;
   Tunnel::TunnelTable::EvpnVxlanTunnelEntry const* evpnEntry = nullptr;
   std::string_view weight{};

   bool isIpInIp() const noexcept { return ipTunnelInfo != nullptr && ipTunnelInfo->isIpInIp(); }
};

// What a route prints. A route with a FEC prints the FEC's vias; one without prints its own single via.
template <class Family>
struct RouteLine {
   typename Family::RouteType routeType{};
   typename Family::Prefix prefix{};
   S32 preference = 0;
   U32 metric = 0;
   std::string_view srcVrf{};  // empty for a route that was not leaked
   CachedFec* fec = nullptr;   // prepared
   ViaLine via{};
   // Its via may do without an interface, such as one that only says what is wrong with the route.
   bool interfaceOptional = false;

   bool leaked() const noexcept { return !srcVrf.empty(); }
   bool hasFecVias() const noexcept { return fec != nullptr && (fec->vias() != 0 || fec->viaEvpnEntry.size() != 0); }
   bool isSrTePolicy() const noexcept { return fec != nullptr && fec->isSrTePolicy(); }
   bool hasPolicies() const noexcept { return fec != nullptr && !fec->policyInfoSet.policyInfo.empty(); }
   // By its type, or by all its vias.
   bool isNexthopGroupRoute() const noexcept {
      return routeType == Family::RouteType::nexthopGroup || (fec != nullptr && fec->isNexthopGroup());
   }
   // The group that a nexthop group route forwards into; null for other routes, and when none of its vias is a group.
   CachedNhgVia const* nexthopGroup() const noexcept {
      U32 const vias = fec != nullptr && isNexthopGroupRoute() ? fec->vias() : 0;
      for (U32 i = 0; i < vias; ++i) {
         if (auto const* const group = fec->nhgVia.find(static_cast<U16>(i)); group != nullptr) {
            return group;
         }
      }
      return nullptr;
   }
};

}  // namespace Kiv
