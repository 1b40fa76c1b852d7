#pragma once

#include "Kiv/selection/Selection.h"

#include <optional>

// Routes that a display shows although the FIB has none: each with a FEC of its own, whose id no table uses and no
// later made-up route of this process gets.
namespace Kiv {

// The host route of a neighbour's address. Where one is selected already, its FEC gets a way through the interface;
// otherwise the route, not yet selected, and its FEC are made up.
template <class Family>
typename Family::Route createAttachedRoute(FecCache& fecs, SortedRoutes<Family> const& selected,
                                           typename Family::Addr const& address, Lumen::IntfId const& intfId);

// The route of a route cache entry: with the entry's FEC, or with one made up of the entry's own vias. A route of that
// prefix that is selected already is returned as it is.
template <class Family>
typename Family::Route createRouteCacheRoute(FecCache& fecs, SortedRoutes<Family> const& selected,
                                             typename Family::Prefix const& prefix,
                                             Routing::Rib::RouteConfigEntry const& entry);

// The same for the entry of that prefix in the tables' VRF; none without such an entry, or without a route cache.
template <class Family>
std::optional<typename Family::Route> routeCacheRoute(RouteTables<Family> const& tables, FecCache& fecs,
                                                      SortedRoutes<Family> const& selected,
                                                      typename Family::Prefix const& prefix);

}  // namespace Kiv
