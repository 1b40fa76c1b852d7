#pragma once

#include "Kiv/routedisplay/RouteSorter.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

// What the restrictions that a sorter carries itself hide: its protocol and, in IPv6, its interface. They are apart
// from the filter objects.
namespace Kiv {

// True when the route is hidden. Routes to the box itself are restricted by their protocol alone. Reads the route's FEC
// from the cache; a route whose FEC is not there is hidden.
KIV_EXPORT bool isRouteFiltered(Route6Sorter* sorter, Vault::Fib6::Route const& route);

// How many of the sorter's selected routes are hidden. Other activities run in between, as in every long walk, and may
// change the selection: routes that stay are looked at once each.
KIV_EXPORT U32 getFilteredRoutesCount(Route6Sorter* sorter);

// None, whatever is hidden: an IPv4 table reports no such count, and commands rely on the zero.
KIV_EXPORT U32 getFilteredRoutesCount(RouteSorter* sorter);

}  // namespace Kiv
