#include "programs/kernel/KernelState.h"

#include "programs/kernel/NextHops.h"
#include "programs/kernel/RouteKind.h"
#include "programs/kernel/Topology.h"
#include "programs/kernel/Tunnels.h"
#include "state/Family.h"

#include <linux/rtnetlink.h>
#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <span>
#include <tuple>

namespace kernel {

namespace {

struct Ip4 : state::Ip4 {
   static constexpr U8 adjType = 2;
   static constexpr auto broadcast = RouteType::receiveBroadcast;
   static constexpr bool joinsRoutes = false;  // of routes with the same metric the kernel uses the first
   static constexpr auto ids = &ForwardingIds::fecs4;

   static Prefix prefix(Lumen::IpGenPrefix const& prefix) { return prefix.prefix(); }
   static RouteType type(ProtocolKind const& kind) { return kind.type; }
};

struct Ip6 : state::Ip6 {
   static constexpr auto broadcast = RouteType::receive;
   static constexpr bool joinsRoutes = true;  // they are one multipath route, or the same prefix on several links
   static constexpr auto ids = &ForwardingIds::fecs6;

   static Prefix prefix(Lumen::IpGenPrefix const& prefix) { return prefix.prefix6(); }
   static RouteType type(ProtocolKind const& kind) { return kind.type6; }
};

// Turns the kernel's routes of one family into those of the VRFs. The FIB holds one route per prefix: where the kernel
// has several, the one that it uses for ordinary packets wins.
template <class Family>
class RouteMapper {
 public:
   using RouteType = typename Family::RouteType;

   RouteMapper(state::State& state, Topology const& topology, NextHops const& nextHops, Tunnels& tunnels,
               StableIds<std::vector<Hop>>& fecIds)
       : state_(state),
         topology_(topology),
         nextHops_(nextHops),
         tunnels_(tunnels),
         fecIds_(fecIds) {}

   void map(KernelRoutes const& routes) {
      std::vector<Candidate> candidates;
      for (KernelRoute const& route : routes) {
         if (auto candidate = candidateOf(route)) {
            candidates.push_back(*std::move(candidate));
         }
      }
      std::ranges::stable_sort(candidates, {}, [](Candidate const& c) { return std::tuple(c.place(), c.rank()); });
      for (auto first = candidates.begin(); first != candidates.end();) {
         auto const isElsewhere = [&](Candidate const& c) { return c.place() != first->place(); };
         auto const last = std::find_if(first, candidates.end(), isElsewhere);
         addBest(std::span(first, last));
         first = last;
      }
   }

 private:
   struct Kind {
      RouteType type;
      U8 preference;
   };

   struct Candidate {
      std::size_t vrf;
      KernelRoute const* route;
      Kind kind;
      std::vector<Hop> hops;

      auto place() const { return std::tuple(vrf, route->prefix); }
      // The kernel asks table local first, then takes the lowest metric; a route for one type of service serves the
      // fewest packets and comes last.
      auto rank() const { return std::tuple(route->table != RT_TABLE_LOCAL, route->tos, route->metric); }
   };

   std::optional<Candidate> candidateOf(KernelRoute const& route) {
      auto const vrf = topology_.vrfOfTable(route.table);
      if (!vrf || route.sourceLength != 0 || (route.flags & RTM_F_CLONED) != 0) {
         return std::nullopt;
      }
      Resolved resolved = nextHops_.resolve(route, topology_);
      auto const kind = kindOf(route, resolved);
      if (!kind) {
         return std::nullopt;
      }
      if (kind->type == RouteType::drop) {
         resolved.hops.clear();
      } else if (resolved.hops.empty()) {
         noteUnusable(route, *kind, *vrf);
         return std::nullopt;
      }
      return Candidate{*vrf, &route, *kind, std::move(resolved.hops)};
   }

   std::optional<Kind> kindOf(KernelRoute const& route, Resolved const& resolved) const {
      ProtocolKind const protocol = protocolKind(route.protocol);
      switch (route.type) {
         case RTN_UNICAST:
            if (resolved.blackhole) {
               return Kind{RouteType::drop, protocol.preference};
            }
            return isConnected(route, resolved.hops) ? Kind{RouteType::connected, 0}
                                                     : Kind{Family::type(protocol), protocol.preference};
         case RTN_BLACKHOLE:
         case RTN_UNREACHABLE:
         case RTN_PROHIBIT:
            return Kind{RouteType::drop, protocol.preference};
         case RTN_LOCAL:
         case RTN_ANYCAST:
            return Kind{RouteType::receive, 0};
         case RTN_BROADCAST:
            return Kind{Family::broadcast, 0};
         default:
            return std::nullopt;  // multicast is no unicast route; throw sends the lookup on to the next table
      }
   }

   // An on-link route of the kernel itself, or, for an address whose prefix route some daemon installs instead (DHCP
   // and router advertisement clients do), the route of that address's subnet.
   bool isConnected(KernelRoute const& route, std::vector<Hop> const& hops) const {
      return !hops.empty() && std::ranges::all_of(hops, [&](Hop const& hop) {
         return hop.gateway.isZero() && (route.protocol == RTPROT_KERNEL || topology_.isSubnet(hop.link, route.prefix));
      });
   }

   // A static default route that has no way out left is still a configured one.
   void noteUnusable(KernelRoute const& route, Kind const& kind, std::size_t vrf) {
      Routing::RouteKey const key{{}, route.prefix, kind.preference};
      if (route.prefix.length() == 0 && kind.type == RouteType::staticConfig) {
         auto& configured = state_.vrfs[vrf].staticRoutes;
         auto const unusable =
             configured.of(Lumen::IpGenPrefix(route.prefix).family()).routeIs(key, Routing::RouteType::forward);
         unusable->nonPersistentIs(true);  // it is the kernel's to keep, and has no vias that a command could configure
      }
   }

   void addBest(std::span<Candidate> candidates) {
      Candidate& best = candidates.front();
      for (Candidate const& other : candidates.subspan(1)) {
         if (Family::joinsRoutes && other.rank() == best.rank() && other.kind.type == best.kind.type) {
            std::ranges::copy(other.hops, std::back_inserter(best.hops));
         }
      }
      state::VrfState& vrf = state_.vrfs[best.vrf];
      (vrf.*Family::routes)
          .push_back({.prefix = Family::prefix(best.route->prefix),
                      .routeType = best.kind.type,
                      .preference = best.kind.preference,
                      .metric = best.route->metric,
                      .fecId = fecOf(std::move(best.hops))});
      if ((best.route->flags & RTM_F_OFFLOAD_FAILED) != 0) {
         vrf.hardwareUnprogrammed.push_back({.prefix = best.route->prefix});
      }
   }

   // The FEC of these next hops, shared by all routes that have the same ones.
   Vault::Fib::FecId fecOf(std::vector<Hop> hops) {
      hops.resize(std::min<std::size_t>(hops.size(), Vault::Fib::maxVias));
      auto const [id, isFirst] = fecIds_.use(hops);
      auto const fecId = Vault::Fib::FecId::of(Family::adjType, id);
      if (isFirst) {
         typename Family::Fec fec{.fecId = fecId, .primaryVias = static_cast<U16>(hops.size())};
         std::ranges::transform(hops, std::back_inserter(fec.vias), [&](Hop const& hop) { return viaOf(hop); });
         (state_.*Family::fecs).push_back(std::move(fec));
      }
      return fecId;
   }

   // Without a gateway, it is to the far end of a tunnel over IP that packets go.
   Vault::Fib::Via viaOf(Hop const& hop) {
      return {.intfId = topology_.interface(hop.link),
              .hop = hop.gateway.isEmpty() && hop.encap ? hop.encap->ip.destination : hop.gateway,
              .label = hop.label,
              .weight = hop.weight,
              .tunnelId = tunnels_.tunnelOf(hop)};
   }

   state::State& state_;
   Topology const& topology_;
   NextHops const& nextHops_;
   Tunnels& tunnels_;
   StableIds<std::vector<Hop>>& fecIds_;
};

// Whether the namespace forwards packets; true when it does not tell.
bool forwards(char const* setting) {
   std::ifstream file(setting);
   int value = 1;
   file >> value;
   return !file || value != 0;
}

}  // namespace

void ForwardingIds::nextReading() {
   fecs4.nextReading();
   fecs6.nextReading();
   tunnels.nextReading();
   labelStacks.nextReading();
}

state::State stateFrom(Model const& model) {
   ForwardingIds ids;
   return stateFrom(model, ids);
}

state::State stateFrom(Model const& model, ForwardingIds& ids) {
   Topology const topology(model);
   NextHops const nextHops(model.nextHops());
   state::State state;
   state.interfaces = topology.interfaces();
   state.vrfs = topology.vrfs();
   Tunnels tunnels(state, topology, ids.tunnels, ids.labelStacks);
   auto const map = [&]<class Family>(Family) {
      RouteMapper<Family>(state, topology, nextHops, tunnels, ids.*Family::ids).map(model.routes(Family::family));
   };
   map(Ip4());
   map(Ip6());
   ids.nextReading();
   return state;
}

state::State readMachine() {
   state::State state = stateFrom(Model(readDumps()));
   for (state::VrfState& vrf : state.vrfs) {
      vrf.routing = forwards("/proc/sys/net/ipv4/conf/all/forwarding");
      vrf.routing6 = forwards("/proc/sys/net/ipv6/conf/all/forwarding");
   }
   return state;
}

}  // namespace kernel
