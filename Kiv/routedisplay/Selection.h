#pragma once

#include "Kiv/common/Watchdog.h"
#include "Kiv/routedisplay/RouteSorter.h"

#include <optional>
#include <vector>

// Which routes a command shows. Every candidate passes filterRoute before it is stored in the sorter's sortedRoute.
namespace Kiv {

// Fills sortedRoute for the request: the whole table, everything inside a prefix, or its longest match.
template <class Family>
void filterPrefixes(RouteSorterOf<Family>& sorter);

// Fills sortedRoute for the host route table: the VRF's routes of host length, and the neighbours that have none.
template <class Family>
void filterHostPrefixes(RouteSorterOf<Family>& sorter, U8 hostLength);

// True when the route must not be shown; a route that is let through is counted. Reads the route's FEC from the cache.
template <class Family>
bool filterRoute(RouteSorterOf<Family>& sorter, typename Family::Route const& route);

// Whether a route that is not the box's own has something to print.
template <class Family>
bool isPrintable(RouteSorterOf<Family> const& sorter, typename Family::Route const& route);

// The route of exactly that prefix. A table that is missing or damaged holds none; damage is reported to the table.
template <class Family>
std::optional<typename Family::Route> fibRoute(RouteSorterOf<Family> const& sorter,
                                               typename Family::Prefix const& prefix);

// Calls `visit(prefix, entry)` for the VRF's route cache entries of this family that the FIB does not hold. Lets other
// activities in between entries; those that are gone by then are left out.
template <class Family, class Visit>
void walkRouteCache(RouteSorterOf<Family> const& sorter, Visit&& visit) {
   auto const& in = sorter.inputs();
   if (!in.routeCacheConfig) {
      return;
   }
   std::vector<Routing::Rib::RouteConfigKey> keys;
   for (auto const& [key, entry] : in.routeCacheConfig->route()) {
      if (key.vrfId == in.vrfId && key.prefix.family() == Family::addressFamily) {
         keys.push_back(key);
      }
   }
   U32 count = 0;
   for (auto const& key : keys) {
      auto const prefix = Family::prefixOf(key.prefix);
      if (auto const* const entry = in.routeCacheConfig->route(key); entry != nullptr && !fibRoute(sorter, prefix)) {
         visit(prefix, *entry);
      }
      allowWatchdog(count);
   }
}

}  // namespace Kiv
