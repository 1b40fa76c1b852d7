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
   wayOnly,    // a way that is no via of its FEC
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
   // It is to forward into a nexthop group, and there is none, nor another way.
   bool lacksGroup() const {
      return group ? group->id == 0 : route.routeType == RouteType::nexthopGroup && body() == RouteBody::nothing;
   }
   // Its FEC has vanished.
   bool isUnresolved() const noexcept { return !fec && route.fecId; }
   bool isToCpu() const noexcept { return route.routeType == RouteType::routeCacheConnected; }

   RouteBody body() const {
      if (!fec || !fec->hasVias()) {
         bool const hasPolicies = fec && !fec->policies().policyInfo.empty();
         return hasPolicies ? RouteBody::policies : isUnresolved() ? RouteBody::wayOnly : RouteBody::nothing;
      }
      if (fec->vias() == 0) {
         return RouteBody::wayOnly;
      }
      return isConnected() ? RouteBody::connected : RouteBody::vias;
   }

 private:
   // Where a line has no room for a single via behind its prefix, only one without a link stands for itself.
   bool isConnected() const {
      if (group || fec->vias() != 1 || !fec->evpnVias().empty()) {
         return false;
      }
      auto const via = fec->via(0);
      return via.isConnected && !via.isIpInIp() && fec->policies().policyInfo.empty() &&
             (Family::viasShareRouteLine || via.interface.empty());
   }
};

}  // namespace Kiv
