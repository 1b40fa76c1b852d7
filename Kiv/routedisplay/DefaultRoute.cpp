#include "Kiv/routedisplay/DefaultRoute.h"

#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/routedisplay/MadeUpRoutes.h"
#include "Kiv/routedisplay/RouteRendering.h"
#include "Kiv/routedisplay/Selection.h"
#include "Routing/RouteKey.h"
#include "cliprint/AttrInfo.h"

#include <algorithm>
#include <optional>

namespace Kiv {

namespace {

enum class DefaultRouteState { notSet, reachable, notReachable };

constexpr char const* word(DefaultRouteState state) {
   switch (state) {
      case DefaultRouteState::notSet:
         return "notSet";
      case DefaultRouteState::reachable:
         return "reachable";
      case DefaultRouteState::notReachable:
         return "notReachable";
   }
   return "";
}

template <class Family>
typename Family::Prefix defaultPrefix() {
   return {typename Family::Addr(), 0};
}

// With any preference: a floating static route is configured too.
template <class Family>
bool isConfigured(RouteSorterOf<Family> const& sorter) {
   auto const& routeList = sorter.inputs().routeList;
   Lumen::IpGenPrefix const prefix(defaultPrefix<Family>());
   return routeList && std::any_of(routeList->route().begin(), routeList->route().end(),
                                   [&](auto const& entry) { return entry.key.prefix == prefix; });
}

template <class Family>
DefaultRouteState defaultRouteState(RouteSorterOf<Family> const& sorter,
                                    std::optional<typename Family::Route> const& route) {
   if (!route) {
      return isConfigured(sorter) ? DefaultRouteState::notReachable : DefaultRouteState::notSet;
   }
   bool const reachable = sorter.inputs().routeList && isPrintable(sorter, *route) &&
                          sorter.sortedRoute().contains(defaultPrefix<Family>());
   return reachable ? DefaultRouteState::reachable : DefaultRouteState::notReachable;
}

// Whether the request was about something else than the default route.
template <class Family>
bool requestedElsewhere(RouteSorterOf<Family> const& sorter) {
   auto const& in = sorter.inputs();
   auto const theDefault = defaultPrefix<Family>();
   if (in.prefix.isNullPrefix() || in.prefix == theDefault) {
      return false;
   }
   return in.longerPrefixes || (sorter.sortedRoutes() == 1 && sorter.sortedRoute().begin()->key != theDefault);
}

template <class Family>
bool isSectionShown(RouteSorterOf<Family> const& sorter, std::optional<typename Family::Route> const& route,
                    bool inFib) {
   if (requestedElsewhere(sorter)) {
      return false;
   }
   if (!route) {
      return true;
   }
   return routeTypeStringsFind(route->routeType) != nullptr && protocolMatch(*route, sorter.inputs().protocol) &&
          (!inFib || sorter.sortedRoute().contains(defaultPrefix<Family>()));
}

template <class Family>
void printSection(RouteSorterOf<Family> const& sorter, cliprint::RendererV2& renderer, DefaultRouteState state,
                  typename Family::Route const* selected) {
   auto const& filters = sorter.inputs().routeFilterColl;
   switch (state) {
      case DefaultRouteState::reachable:
         renderer.addFrills("Gateway of last resort:\n");
         RouteRendering<Family>(sorter, renderer).printRoute(*selected);
         renderer.addFrills("\n");
         return;
      case DefaultRouteState::notReachable:
         renderer.addFrills("Gateway of last resort is not reachable\n\n");
         return;
      case DefaultRouteState::notSet:
         if (!filters || filters->empty()) {
            renderer.addFrills("Gateway of last resort is not set\n\n");
         }
         return;
   }
}

}  // namespace

template <class Family>
void printDefaultRoute(RouteSorterOf<Family>& sorter, cliprint::RendererV2& renderer) {
   auto route = fibRoute(sorter, defaultPrefix<Family>());
   bool const inFib = route.has_value();
   if (!inFib) {
      route = routeCacheRoute(sorter, defaultPrefix<Family>());
   }
   auto const state = defaultRouteState(sorter, route);
   cliprint::StringAttrInfo const stateAttr("defaultRouteState", renderer, word(state));
   renderer.addAttributes("", stateAttr.getArg());
   if (renderer.isModel()) {
      renderer._startJsonObject("routes");
   }
   if (isSectionShown(sorter, route, inFib)) {
      // The route as it was selected, whatever became of it since: its FEC is the one in the cache.
      printSection(sorter, renderer, state, sorter.sortedRoute().find(defaultPrefix<Family>()));
   }
   sorter.sortedRouteDel(defaultPrefix<Family>());
}

template void printDefaultRoute(RouteSorterOf<Ipv4>&, cliprint::RendererV2&);
template void printDefaultRoute(RouteSorterOf<Ipv6>&, cliprint::RendererV2&);

}  // namespace Kiv
