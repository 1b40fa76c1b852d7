#pragma once

#include "Kiv/common/Family.h"
#include "Kiv/display/FecDisplay.h"

#include <optional>
#include <string_view>

namespace Kiv {

// What a route prints behind its preference and metric, or in their place.
enum class RouteBody {
   connected,  // that it is directly connected, and the link
   nothing,    // that it leads nowhere, or to the box itself
   vias,       // its vias, or the group that they lead into
   policies,   // on the lines below
};

template <class Family>
struct RouteLine {
   using RouteType = typename Family::RouteType;

   typename Family::Route const& route;
   std::string_view srcVrf{};  // empty for a route that was not leaked
   std::optional<DisplayFec> fec{};
   std::optional<GroupTarget> group{};  // that a nexthop group route forwards into

   bool leaked() const noexcept { return !srcVrf.empty(); }
   // Its FEC has vanished.
   bool isUnresolved() const noexcept { return !fec && route.fecId; }
   bool isToCpu() const noexcept { return route.routeType == RouteType::routeCacheConnected; }

   RouteBody body() const {
      if (!fec || !fec->hasVias()) {
         bool const hasPolicies = fec && !fec->policies().policyInfo.empty();
         return hasPolicies ? RouteBody::policies : isUnresolved() ? RouteBody::vias : RouteBody::nothing;
      }
      return isConnected() ? RouteBody::connected : RouteBody::vias;
   }

 private:
   // Only where a line has room for a single via behind its prefix.
   bool isConnected() const {
      if (!Family::viasShareRouteLine || group || fec->vias() != 1 || !fec->evpnVias().empty()) {
         return false;
      }
      auto const via = fec->via(0);
      return via.isConnected && !via.isIpInIp() && fec->policies().policyInfo.empty();
   }
};

}  // namespace Kiv
