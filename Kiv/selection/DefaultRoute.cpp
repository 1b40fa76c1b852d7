#include "Kiv/selection/DefaultRoute.h"

#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/selection/MadeUpRoutes.h"
#include "Routing/RouteKey.h"

#include <algorithm>

namespace Kiv {

namespace {

// With any preference: a floating static route is configured too.
template <class Family>
bool isConfigured(Routing::RouteList const* routeList) {
   Lumen::IpGenPrefix const prefix(DefaultRoute<Family>::prefix());
   return routeList != nullptr && std::any_of(routeList->route().begin(), routeList->route().end(),
                                              [&](auto const& entry) { return entry.key.prefix == prefix; });
}

// Whether the request was about something else than the default route.
template <class Family>
bool requestedElsewhere(Selection<Family> const& selection) {
   auto const& requested = selection.request().prefix;
   auto const& routes = selection.routes();
   auto const theDefault = DefaultRoute<Family>::prefix();
   if (requested.isNullPrefix() || requested == theDefault) {
      return false;
   }
   return selection.request().longerPrefixes || (routes.size() == 1 && routes.begin()->key != theDefault);
}

template <class Route>
bool matchesProtocol(Route const& route, std::string_view protocol) {
   return routeTypeStringsFind(route.routeType) != nullptr && protocolMatch(route, protocol);
}

template <class Family>
bool isSectionShown(Selection<Family> const& selection, DefaultRoute<Family> const& found,
                    std::optional<typename Family::Route> const& route, bool inFib) {
   auto const& filters = selection.request().filters;
   if (requestedElsewhere(selection)) {
      return false;
   }
   if (!route) {
      // With filters, that there is none says nothing.
      return found.state != DefaultRouteState::notSet || !filters || filters->empty();
   }
   return matchesProtocol(*route, selection.request().protocol) && (!inFib || found.route);
}

}  // namespace

template <class Family>
DefaultRoute<Family> defaultRoute(Selection<Family>& selection, Routing::RouteList const* routeList) {
   auto const prefix = DefaultRoute<Family>::prefix();
   DefaultRoute<Family> found;
   // As it was selected, from whichever table and whatever became of it since: its FEC is the one in the cache.
   if (auto const* const selected = selection.routes().find(prefix); selected != nullptr) {
      found.route = *selected;
   }
   auto route = found.route ? found.route : selection.tables().fibRoute(prefix);
   bool const inFib = route.has_value();
   if (!inFib) {
      route = routeCacheRoute(selection.tables(), selection.fecs(), selection.routes(), prefix);
   }
   if (!route) {
      bool const configured = isConfigured<Family>(routeList);
      found.state = configured ? DefaultRouteState::notReachable : DefaultRouteState::notSet;
   } else {
      bool const reachable = routeList != nullptr && selection.isPrintable(*route) && found.route;
      found.state = reachable ? DefaultRouteState::reachable : DefaultRouteState::notReachable;
   }
   found.isShown = isSectionShown(selection, found, route, inFib);
   return found;
}

template DefaultRoute<Ipv4> defaultRoute(Selection<Ipv4>&, Routing::RouteList const*);
template DefaultRoute<Ipv6> defaultRoute(Selection<Ipv6>&, Routing::RouteList const*);

}  // namespace Kiv
