#include "Kiv/routedisplay/FilteredRoutes.h"

#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/common/Watchdog.h"

#include <algorithm>
#include <iterator>

namespace Kiv {

namespace {

// What a sorter without the interface flag does with its interface status: it hides the routes that have no via.
bool leavesThroughRequested(Route6Sorter::Inputs const& in, FecStore const& fecs, FecRecord const& fec) {
   auto const& intfStatus = in.intfStatus;
   if (!in.familySwitch) {
      return fec.viaCount != 0 || !intfStatus;
   }
   return intfStatus && std::ranges::any_of(fec.vias(), [&](auto const& via) {
             return fecs.arena().leg(via).intfId == intfStatus->intfId();
          });
}

Route6Sorter::SortedRoutes::const_iterator firstBehind(Route6Sorter::SortedRoutes const& routes,
                                                       Ipv6::Prefix const& prefix) {
   auto const at = routes.lowerBound(prefix);
   return at != routes.end() && at->key == prefix ? std::next(at) : at;
}

}  // namespace

bool isRouteFiltered(Route6Sorter* sorter, Vault::Fib6::Route const& route) {
   auto const& in = sorter->inputs();
   if (Ipv6::isReceive(route.routeType)) {
      return !protocolMatch(route, in.protocol);
   }
   if (!sorter->isPrintable(route) || !protocolMatch(route, in.protocol)) {
      return true;
   }
   auto const* const fec = sorter->fecs().record(route.fecId);
   return fec == nullptr || !leavesThroughRequested(in, sorter->fecs().store(), *fec);
}

U32 getFilteredRoutesCount(Route6Sorter* sorter) {
   auto const& routes = sorter->sortedRoute();
   U32 hidden = 0;
   U32 sinceYield = 0;
   for (auto at = routes.begin(); at != routes.end();) {
      auto const [prefix, route] = *at;
      auto const generation = routes.generation();
      hidden += isRouteFiltered(sorter, route) ? 1 : 0;
      allowWatchdog(sinceYield);
      at = routes.generation() == generation ? std::next(at) : firstBehind(routes, prefix);
   }
   return hidden;
}

U32 getFilteredRoutesCount(RouteSorter* /* sorter */) {
   return 0;
}

}  // namespace Kiv
