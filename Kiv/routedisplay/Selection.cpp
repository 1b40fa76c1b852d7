#include "Kiv/routedisplay/Selection.h"

#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/common/SafeLookup.h"
#include "Kiv/common/Trace.h"
#include "Kiv/routedisplay/FecCache.h"
#include "Kiv/routedisplay/MadeUpRoutes.h"

#include <array>
#include <span>
#include <utility>
#include <vector>

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

bool isLinkLocal(Lumen::Ip6Prefix const& prefix) {
   static Lumen::Ip6Prefix const linkLocal = Lumen::Ip6Prefix::parse("fe80::/10");
   return prefix == linkLocal;
}
bool isLinkLocal(Lumen::Prefix const& /* prefix */) {
   return false;
}

// Whether a route that is not the box's own has something to print, given its FEC, if that is in the cache.
template <class Family>
bool isPrintable(RouteSorterOf<Family> const& sorter, typename Family::Route const& route, CachedFec const* fec) {
   if (route.routeType == Family::RouteType::nexthopGroup) {
      return true;
   }
   if (!route.fecId) {
      return false;
   }
   return fec == nullptr || fec->hasValidIntf() || fec->vias() == 0 || sorter.inputs().showHidden;
}

template <class Family>
bool isHidden(RouteSorterOf<Family> const& sorter, typename Family::Route const& route, CachedFec* fec) {
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
      if (!isPrintable(sorter, route, fec) || (type == RouteType::martian && !in.showHidden)) {
         return true;
      }
   } else if (!isOwnPrefix(sorter, route) && (!in.showHidden || !isLinkLocal(route.prefix))) {
      return true;
   }
   return in.routeFilterColl && !in.routeFilterColl->empty() && in.routeFilterColl->filter(Zam::Ptr<CachedFec>(fec));
}

// Stores the route if the filter lets it through; the filter sees the FEC if it is given.
template <class Family>
bool selected(RouteSorterOf<Family>& sorter, typename Family::Route const& route, CachedFec* fec) {
   if (isHidden(sorter, route, fec)) {
      return false;
   }
   sorter.selectedRoutesInc();
   sorter.sortedRouteIs(route.prefix, route);
   return true;
}

// The same with the route's FEC brought into the cache first.
template <class Family>
bool selected(RouteSorterOf<Family>& sorter, typename Family::Route const& route) {
   return selected(sorter, route, copyAdjacency(sorter, route.fecId));
}

template <class Family, class Visit>
void walkFib(RouteSorterOf<Family> const& sorter, Visit&& visit) {
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
void selectFromRouteCache(RouteSorterOf<Family>& sorter, typename Family::Prefix const& within) {
   walkRouteCache(sorter, [&](auto const& prefix, auto const& entry) {
      if (within.contains(prefix)) {
         auto const route = createRouteCacheRoute(sorter, prefix, entry);
         selected(sorter, route, sorter.findFec(route.fecId));
      }
   });
}

// Routes that wait, a few at a time, for their FECs to come from memory: with thousands of them in use, the walk would
// stand still for nearly every one.
template <class Family>
class WaitingRoutes {
 public:
   explicit WaitingRoutes(RouteSorterOf<Family>& sorter) : sorter_(sorter) {}

   void add(typename Family::Route const& route) {
      auto* const fec = copyAdjacency(sorter_, route.fecId);
      __builtin_prefetch(fec);
      routes_[count_] = {route, fec};
      if (++count_ == routes_.size()) {
         selectAll();
      }
   }
   void selectAll() {
      for (auto const& [route, fec] : std::span(routes_).first(count_)) {
         selected(sorter_, route, fec);
      }
      count_ = 0;
   }

 private:
   RouteSorterOf<Family>& sorter_;
   std::array<std::pair<typename Family::Route, CachedFec*>, 16> routes_{};
   std::size_t count_ = 0;
};

template <class Family>
void filterWholeTable(RouteSorterOf<Family>& sorter) {
   selectFromRouteCache(sorter, typename Family::Prefix(typename Family::Addr(), 0));
   WaitingRoutes<Family> waiting(sorter);
   walkFib(sorter, [&](auto const& route) { waiting.add(route); });
   waiting.selectAll();
}

// Asks the table for every prefix that a prefix contains, shorter ones first.
template <class Family, class Visit>
void lookUpAllWithin(RouteSorterOf<Family> const& sorter, typename Family::Prefix const& within, Visit&& visit) {
   constexpr auto maxLength = Family::Prefix::maxLength;
   U32 count = 0;
   for (U8 length = within.length(); length <= maxLength; ++length) {
      U64 const prefixes = U64{1} << (length - within.length());
      for (U64 i = 0; i < prefixes; ++i) {
         auto const address = Family::withLowBits(within.address(), i << (maxLength - length));
         if (auto const route = fibRoute(sorter, typename Family::Prefix(address, length))) {
            visit(*route);
         }
         allowWatchdog(count);
      }
   }
}

// Whether a prefix contains so few others that asking for each is cheaper than walking over the table. A lookup, which
// goes anywhere in memory, costs about as much as walking over ten routes.
template <class Family>
bool worthLookingUpAll(RouteSorterOf<Family> const& sorter) {
   constexpr U64 routesPerLookup = 10;
   auto const& in = sorter.inputs();
   unsigned const hostBits = Family::Prefix::maxLength - in.prefix.length();
   return in.routingStatus && hostBits < 32 && (U64{2} << hostBits) * routesPerLookup < in.routingStatus->routes();
}

// The filter runs before the FEC is copied here, unlike in the other requests, so it sees a FEC only when an earlier
// route brought it in; what it shows depends on that order and stays so.
template <class Family>
void filterLongerPrefixes(RouteSorterOf<Family>& sorter) {
   auto const& within = sorter.inputs().prefix;
   selectFromRouteCache(sorter, within);
   auto const select = [&](auto const& route) {
      if (selected(sorter, route, sorter.findFec(route.fecId))) {
         copyAdjacency(sorter, route.fecId);
      }
   };
   if (worthLookingUpAll(sorter)) {
      lookUpAllWithin(sorter, within, select);
   } else {
      walkFib(sorter, [&](auto const& route) {
         if (within.contains(route.prefix)) {
            select(route);
         }
      });
   }
}

// From the requested length down, in the FIB and then in the route cache; a route that the filter hides does not end
// the search.
template <class Family>
void filterLongestMatch(RouteSorterOf<Family>& sorter) {
   auto const& requested = sorter.inputs().prefix;
   for (int length = requested.length(); length >= 0; --length) {
      auto const prefix = requested.truncated(static_cast<U8>(length));
      if (auto const route = fibRoute(sorter, prefix); route && selected(sorter, *route)) {
         return;
      }
      if (auto const route = routeCacheRoute(sorter, prefix);
          route && selected(sorter, *route, sorter.findFec(route->fecId))) {
         return;
      }
   }
}

// The neighbours on the VRF's interfaces that the FIB has no host route for.
template <class Family>
void selectAttachedHosts(RouteSorterOf<Family>& sorter) {
   auto const& in = sorter.inputs();
   if (!in.attachedRouteStatus) {
      return;
   }
   auto const isOurs = [&in](auto const& key, auto const& attached) {
      return attached.active && attached.vrfId == in.vrfId && key.address.family() == Family::addressFamily;
   };
   auto const& neighbors = in.attachedRouteStatus->route();
   std::vector<Routing::AttachedRouteKey> keys;
   for (auto const& [key, attached] : neighbors) {
      if (isOurs(key, attached)) {
         keys.push_back(key);
      }
   }
   // Others are let in between them: what is gone by then is no neighbor any more.
   U32 count = 0;
   for (auto const& key : keys) {
      auto const address = Family::addrOf(key.address);
      auto const* const attached = neighbors.find(key);
      if (attached != nullptr && isOurs(key, *attached) &&
          !fibRoute(sorter, typename Family::Prefix(address, Family::Prefix::maxLength))) {
         auto const route = createAttachedRoute(sorter, address, key.intfId);
         sorter.sortedRouteIs(route.prefix, route);
      }
      allowWatchdog(count);
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
   return isPrintable(sorter, route, sorter.findFec(route.fecId));
}

template <class Family>
bool filterRoute(RouteSorterOf<Family>& sorter, typename Family::Route const& route) {
   if (isHidden(sorter, route, sorter.findFec(route.fecId))) {
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
   selectAttachedHosts(sorter);
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
