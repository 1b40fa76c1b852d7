#pragma once

#include "Kiv/common/DefaultRouteState.h"
#include "Kiv/selection/Selection.h"
#include "Routing/RouteList.h"

#include <optional>

namespace Kiv {

// The gateway of last resort of a selection.
template <class Family>
struct DefaultRoute {
   DefaultRouteState state{};
   bool isShown = false;                           // in the text: the request is not about something else
   std::optional<typename Family::Route> route{};  // as it was selected

   static typename Family::Prefix prefix() { return {typename Family::Addr(), 0}; }
};

// Looks for it among the selected routes, in the FIB, in the route cache, then in the configuration; the route list may
// be null. A route of the route cache that was not selected brings its FEC in.
template <class Family>
DefaultRoute<Family> defaultRoute(Selection<Family>& selection, Routing::RouteList const* routeList);

extern template DefaultRoute<Ipv4> defaultRoute(Selection<Ipv4>&, Routing::RouteList const*);
extern template DefaultRoute<Ipv6> defaultRoute(Selection<Ipv6>&, Routing::RouteList const*);

}  // namespace Kiv
