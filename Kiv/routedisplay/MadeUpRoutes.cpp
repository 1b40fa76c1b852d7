#include "Kiv/routedisplay/MadeUpRoutes.h"

#include "Kiv/routedisplay/FecCache.h"

#include <atomic>

namespace Kiv {

namespace {

using Vault::Fib::Fec;
using Vault::Fib::FecId;

constexpr U8 adjTypeMadeUp = 4;

FecId nextMadeUpFecId() noexcept {
   static std::atomic<U64> last{0};
   return FecId::of(adjTypeMadeUp, ++last);
}

// Puts a made-up FEC into the cache, and what it resolves through.
template <class Family>
void madeUpFecIs(RouteSorterOf<Family>& sorter, Fec const& fec) {
   std::vector<FecId> pending;
   cachedFecIs(sorter, fec.fecId, fec, pending);
   for (FecId const next : pending) {
      copyAdjacency(sorter, next);
   }
}

template <class Family>
constexpr typename Family::RouteType routeCacheType(Routing::RouteType type) {
   using Type = typename Family::RouteType;
   switch (type) {
      case Routing::RouteType::forward:
         return Type::routeCacheForward;
      case Routing::RouteType::drop:
         return Type::drop;
      case Routing::RouteType::nexthopGroup:
         return Type::nexthopGroup;
      case Routing::RouteType::l2NexthopGroup:
         return Type::l2NexthopGroup;
      case Routing::RouteType::routeCacheConnected:
         return Type::routeCacheConnected;
   }
   return Type::unknown;
}

Fec fecOf(FecId fecId, std::vector<Routing::Via> const& vias) {
   Fec fec{fecId, 0, {}};
   for (Routing::Via const& configured : vias) {
      if (configured.vtepAddr.isZero()) {
         auto& via = fec.vias.emplace_back();
         via.intfId = configured.intfId;
         via.hop = configured.hop;
         via.label = configured.mplsLabel;
      }
   }
   return fec;
}

// Vias over VXLAN have no next hop; what they have is kept beside the others.
void evpnViasAre(CachedFec& fec, std::vector<Routing::Via> const& vias) {
   using Routing::Rib::RouteCache::Evpn::ViaIndex;
   std::size_t index = 0;
   for (Routing::Via const& via : vias) {
      if (!via.vtepAddr.isZero()) {
         fec.viaEvpnEntry.insertOrReplace(ViaIndex(index++).value(),
                                          {{}, via.vtepAddr, via.vni, via.routerMac, via.localIntf});
      }
   }
   fec.preparedVias = fec.viaEvpnEntry.size();
}

}  // namespace

template <class Family>
typename Family::Route createAttachedRoute(RouteSorterOf<Family>& sorter, typename Family::Addr const& address,
                                           Lumen::IntfId const& intfId) {
   typename Family::Prefix const host(address, Family::Prefix::maxLength);
   if (auto const* const selected = sorter.sortedRoute().find(host); selected != nullptr) {
      if (auto const fec = sorter.fec(selected->fecId)) {
         CachedVia via;
         via.intfId = intfId;
         fec->viaIs(std::move(via), true);
      }
      return *selected;
   }
   typename Family::Route route;
   route.prefix = host;
   route.routeType = Family::RouteType::attached;
   route.fecId = nextMadeUpFecId();
   Vault::Fib::Via via;
   via.intfId = intfId;
   madeUpFecIs(sorter, {route.fecId, 0, {via}});
   return route;
}

template <class Family>
typename Family::Route createRouteCacheRoute(RouteSorterOf<Family>& sorter, typename Family::Prefix const& prefix,
                                             Routing::Rib::RouteConfigEntry const& entry) {
   if (auto const* const selected = sorter.sortedRoute().find(prefix); selected != nullptr) {
      return *selected;
   }
   typename Family::Route route;
   route.prefix = prefix;
   route.routeType = routeCacheType<Family>(entry.routeType);
   route.preference = entry.preference;
   route.metric = entry.metric;
   if (entry.fecId != 0) {
      route.fecId = FecId(entry.fecId);
      copyAdjacency(sorter, route.fecId);
   } else {
      route.fecId = nextMadeUpFecId();
      madeUpFecIs(sorter, fecOf(route.fecId, entry.vias));
      evpnViasAre(*sorter.findFec(route.fecId), entry.vias);
   }
   return route;
}

template <class Family>
std::optional<typename Family::Route> routeCacheRoute(RouteSorterOf<Family>& sorter,
                                                      typename Family::Prefix const& prefix) {
   auto const& in = sorter.inputs();
   auto const* const entry =
       in.routeCacheConfig ? in.routeCacheConfig->route({{}, Lumen::IpGenPrefix(prefix), in.vrfId}) : nullptr;
   if (entry == nullptr) {
      return std::nullopt;
   }
   return createRouteCacheRoute(sorter, prefix, *entry);
}

template Ipv4::Route createAttachedRoute(RouteSorterOf<Ipv4>&, Ipv4::Addr const&, Lumen::IntfId const&);
template Ipv6::Route createAttachedRoute(RouteSorterOf<Ipv6>&, Ipv6::Addr const&, Lumen::IntfId const&);
template Ipv4::Route createRouteCacheRoute(RouteSorterOf<Ipv4>&, Ipv4::Prefix const&,
                                           Routing::Rib::RouteConfigEntry const&);
template Ipv6::Route createRouteCacheRoute(RouteSorterOf<Ipv6>&, Ipv6::Prefix const&,
                                           Routing::Rib::RouteConfigEntry const&);
template std::optional<Ipv4::Route> routeCacheRoute(RouteSorterOf<Ipv4>&, Ipv4::Prefix const&);
template std::optional<Ipv6::Route> routeCacheRoute(RouteSorterOf<Ipv6>&, Ipv6::Prefix const&);

}  // namespace Kiv
