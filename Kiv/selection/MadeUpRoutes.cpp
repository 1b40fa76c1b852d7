#include "Kiv/selection/MadeUpRoutes.h"

namespace Kiv {

namespace {

using EvpnVia = Tunnel::TunnelTable::EvpnVxlanTunnelEntry;

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

std::vector<Vault::Fib::Via> plainVias(std::vector<Routing::Via> const& configured) {
   std::vector<Vault::Fib::Via> vias;
   for (auto const& each : configured) {
      if (each.vtepAddr.isZero()) {
         auto& via = vias.emplace_back();
         via.intfId = each.intfId;
         via.hop = each.hop;
         via.label = each.mplsLabel;
      }
   }
   return vias;
}

// Vias over VXLAN have no next hop; what they have is kept beside the others.
std::vector<EvpnVia> evpnVias(std::vector<Routing::Via> const& configured) {
   using Routing::Rib::RouteCache::Evpn::ViaIndex;
   std::vector<EvpnVia> vias;
   for (auto const& via : configured) {
      if (!via.vtepAddr.isZero()) {
         (void)ViaIndex(vias.size());
         vias.push_back({{}, via.vtepAddr, via.vni, via.routerMac, via.localIntf});
      }
   }
   return vias;
}

}  // namespace

template <class Family>
typename Family::Route createAttachedRoute(FecCache& fecs, SortedRoutes<Family> const& selected,
                                           typename Family::Addr const& address, Lumen::IntfId const& intfId) {
   typename Family::Prefix const host(address, Family::Prefix::maxLength);
   if (auto const* const route = selected.find(host); route != nullptr) {
      if (auto const* const fec = fecs.record(route->fecId); fec != nullptr) {
         CachedVia via;
         via.intfId = intfId;
         fecs.handle(*fec)->viaIs(via, true);
      }
      return *route;
   }
   Vault::Fib::Via via;
   via.intfId = intfId;
   typename Family::Route route;
   route.prefix = host;
   route.routeType = Family::RouteType::attached;
   route.fecId = fecs.makeUp({&via, 1}).fecId;
   return route;
}

template <class Family>
typename Family::Route createRouteCacheRoute(FecCache& fecs, SortedRoutes<Family> const& selected,
                                             typename Family::Prefix const& prefix,
                                             Routing::Rib::RouteConfigEntry const& entry) {
   if (auto const* const route = selected.find(prefix); route != nullptr) {
      return *route;
   }
   typename Family::Route route;
   route.prefix = prefix;
   route.routeType = routeCacheType<Family>(entry.routeType);
   route.preference = entry.preference;
   route.metric = entry.metric;
   if (entry.fecId != 0) {
      route.fecId = Vault::Fib::FecId(entry.fecId);
      fecs.copyAdjacency(route.fecId);
   } else {
      auto const& fec = fecs.makeUp(plainVias(entry.vias));
      route.fecId = fec.fecId;
      fecs.handle(fec)->viaEvpnEntryIs(evpnVias(entry.vias));
   }
   return route;
}

template <class Family>
std::optional<typename Family::Route> routeCacheRoute(RouteTables<Family> const& tables, FecCache& fecs,
                                                      SortedRoutes<Family> const& selected,
                                                      typename Family::Prefix const& prefix) {
   auto const* const entry = tables.routeCacheEntry(prefix);
   if (entry == nullptr) {
      return std::nullopt;
   }
   return createRouteCacheRoute<Family>(fecs, selected, prefix, *entry);
}

template Ipv4::Route createAttachedRoute<Ipv4>(FecCache&, SortedRoutes<Ipv4> const&, Ipv4::Addr const&,
                                               Lumen::IntfId const&);
template Ipv4::Route createRouteCacheRoute<Ipv4>(FecCache&, SortedRoutes<Ipv4> const&, Ipv4::Prefix const&,
                                                 Routing::Rib::RouteConfigEntry const&);
template std::optional<Ipv4::Route> routeCacheRoute(RouteTables<Ipv4> const&, FecCache&, SortedRoutes<Ipv4> const&,
                                                    Ipv4::Prefix const&);
template Ipv6::Route createAttachedRoute<Ipv6>(FecCache&, SortedRoutes<Ipv6> const&, Ipv6::Addr const&,
                                               Lumen::IntfId const&);
template Ipv6::Route createRouteCacheRoute<Ipv6>(FecCache&, SortedRoutes<Ipv6> const&, Ipv6::Prefix const&,
                                                 Routing::Rib::RouteConfigEntry const&);
template std::optional<Ipv6::Route> routeCacheRoute(RouteTables<Ipv6> const&, FecCache&, SortedRoutes<Ipv6> const&,
                                                    Ipv6::Prefix const&);

}  // namespace Kiv
