#include "Kiv/routedisplay/Selection.h"

#include "Kiv/routedisplay/FecCache.h"
#include "Kiv/routedisplay/RouteTypeStrings.h"
#include "Kiv/routedisplay/SafeLookup.h"
#include "Kiv/routedisplay/Trace.h"
#include "Kiv/routedisplay/Watchdog.h"

#include <algorithm>

namespace Kiv {

namespace {

template <class Family>
typename Family::AddrWithMask asAddrWithMask(typename Family::Prefix const& prefix) {
   return {prefix.address(), prefix.length()};
}

// Whether a route to the box itself is one that users know about: an address or loopback of this VRF.
template <class Family>
bool isOwnPrefix(RouteSorterOf<Family> const& sorter, typename Family::Route const& route) {
   return sorter.isInterfaceAddress(asAddrWithMask<Family>(route.prefix)) ||
          sorter.isLoopbackPrefix(route.srcVrfId, route.prefix) ||
          (route.srcVrfId == Vrf::VrfIdMap::noVrf && sorter.isLoopbackPrefix(sorter.inputs().vrfId, route.prefix));
}

template <class Prefix>
bool isLinkLocal(Prefix const& prefix) {
   return prefix.stringValue() == "fe80::/10";
}

// Stores the route if the filter lets it through; the filter sees its FEC.
template <class Family>
bool selected(RouteSorterOf<Family>& sorter, typename Family::Route const& route) {
   copyAdjacency(sorter, route.fecId);
   if (filterRoute(sorter, route)) {
      return false;
   }
   sorter.sortedRouteIs(route.prefix, route);
   return true;
}

template <class Family, class Visit>
void walkFib(RouteSorterOf<Family>& sorter, Visit&& visit) {
   if (!sorter.inputs().routingStatus) {
      return;
   }
   U32 count = 0;
   sorter.inputs().routingStatus->walk([&](typename Family::Route const& route) {
      visit(route);
      allowWatchdog(count);
   });
}

template <class Family>
void filterWholeTable(RouteSorterOf<Family>& sorter) {
   walkFib(sorter, [&](auto const& route) { selected(sorter, route); });
}

// The filter runs before the FEC is copied here, unlike in the other requests, so it sees a FEC only when an earlier
// route brought it in; what it shows depends on that order and stays so.
template <class Family>
void filterLongerPrefixes(RouteSorterOf<Family>& sorter) {
   walkFib(sorter, [&](auto const& route) {
      if (sorter.inputs().prefix.contains(route.prefix) && !filterRoute(sorter, route)) {
         copyAdjacency(sorter, route.fecId);
         sorter.sortedRouteIs(route.prefix, route);
      }
   });
}

// From the requested length down; a route that the filter hides does not end the search.
template <class Family>
void filterLongestMatch(RouteSorterOf<Family>& sorter) {
   auto const& requested = sorter.inputs().prefix;
   for (int length = requested.length(); length >= 0; --length) {
      auto const route = fibRoute(sorter, requested.truncated(static_cast<U8>(length)));
      if (route && selected(sorter, *route)) {
         return;
      }
   }
}

}  // namespace

template <class Family>
std::optional<typename Family::Route> fibRoute(RouteSorterOf<Family> const& sorter,
                                               typename Family::Prefix const& prefix) {
   return safeLookup(sorter.inputs().routingStatus.get(), [&](auto const& table) { return table.route(prefix); });
}

template <class Family>
bool isPrintable(RouteSorterOf<Family> const& sorter, typename Family::Route const& route) {
   if (route.routeType == Family::RouteType::nexthopGroup) {
      return true;
   }
   if (!route.fecId) {
      return false;
   }
   auto const fec = sorter.fec(route.fecId);
   if (!fec || fec->vias() == 0 || sorter.inputs().showHidden) {
      return true;
   }
   return std::any_of(fec->via().begin(), fec->via().end(), [](auto const& via) { return via.key.intfId.isValid(); });
}

template <class Family>
bool filterRoute(RouteSorterOf<Family>& sorter, typename Family::Route const& route) {
   using RouteType = typename Family::RouteType;
   auto const& in = sorter.inputs();
   auto const type = route.routeType;
   if (routeTypeStringsFind(type) == nullptr) {
      trace(0, "filterRoute", "Skipping route for ", route.prefix, " of unexpected type ", int{static_cast<U8>(type)});
      return true;
   }
   if (type == RouteType::unknown || type == RouteType::attached || !protocolMatch(route, in.protocol)) {
      return true;
   }
   if (!Family::isReceive(type)) {
      if (!isPrintable(sorter, route) || (type == RouteType::martian && !in.showHidden)) {
         return true;
      }
   } else if (!isOwnPrefix(sorter, route) && (!in.showHidden || !isLinkLocal(route.prefix))) {
      return true;
   }
   if (in.routeFilterColl && !in.routeFilterColl->empty() && in.routeFilterColl->filter(sorter.fec(route.fecId))) {
      return true;
   }
   sorter.selectedRoutesInc();
   return false;
}

template <class Family>
void filterPrefixes(RouteSorterOf<Family>& sorter) {
   if (sorter.inputs().prefix.isNullPrefix()) {
      filterWholeTable(sorter);
   } else if (sorter.inputs().longerPrefixes) {
      filterLongerPrefixes(sorter);
   } else {
      filterLongestMatch(sorter);
   }
}

template <class Family>
void filterHostPrefixes(RouteSorterOf<Family>& sorter, U8 hostLength) {
   auto const unshown = [](auto type) {
      return type == Family::RouteType::unknown || routeTypeStringsFind(type) == nullptr;
   };
   walkFib(sorter, [&](auto const& route) {
      if (route.prefix.length() == hostLength && !unshown(route.routeType)) {
         copyAdjacency(sorter, route.fecId);
         sorter.sortedRouteIs(route.prefix, route);
      }
   });
}

template std::optional<Ipv4::Route> fibRoute(RouteSorterOf<Ipv4> const&, Ipv4::Prefix const&);
template std::optional<Ipv6::Route> fibRoute(RouteSorterOf<Ipv6> const&, Ipv6::Prefix const&);
template bool isPrintable(RouteSorterOf<Ipv4> const&, Ipv4::Route const&);
template bool isPrintable(RouteSorterOf<Ipv6> const&, Ipv6::Route const&);
template bool filterRoute(RouteSorterOf<Ipv4>&, Ipv4::Route const&);
template bool filterRoute(RouteSorterOf<Ipv6>&, Ipv6::Route const&);
template void filterPrefixes(RouteSorterOf<Ipv4>&);
template void filterPrefixes(RouteSorterOf<Ipv6>&);
template void filterHostPrefixes(RouteSorterOf<Ipv4>&, U8);
template void filterHostPrefixes(RouteSorterOf<Ipv6>&, U8);

}  // namespace Kiv
