#pragma once

#include "programs/kernel/NextHops.h"
#include "programs/kernel/RouteKind.h"
#include "state/Family.h"

#include <linux/rtnetlink.h>
#include <algorithm>
#include <iterator>
#include <optional>
#include <span>
#include <tuple>
#include <vector>

// What the kernel's routes of a prefix come to in a FIB, which holds one route per prefix: where the kernel has
// several, the one that it uses for ordinary packets wins.
namespace kernel {

struct Ip4 : state::Ip4 {
   static constexpr U8 adjType = 2;
   static constexpr auto broadcast = RouteType::receiveBroadcast;
   static constexpr bool joinsRoutes = false;  // of routes with the same metric the kernel uses the first

   static Prefix prefix(Lumen::IpGenPrefix const& prefix) { return prefix.prefix(); }
   static RouteType type(ProtocolKind const& kind) { return kind.type; }
};

struct Ip6 : state::Ip6 {
   static constexpr auto broadcast = RouteType::receive;
   static constexpr bool joinsRoutes = true;  // they are one multipath route, or the same prefix on several links

   static Prefix prefix(Lumen::IpGenPrefix const& prefix) { return prefix.prefix6(); }
   static RouteType type(ProtocolKind const& kind) { return kind.type6; }
};

template <class Family>
class RouteChoice {
 public:
   using RouteType = typename Family::RouteType;

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
      bool isUsable() const { return kind.type == RouteType::drop || !hops.empty(); }
      // A static default route that has no way out left is still a configured one.
      bool isUnusableDefault() const {
         return !isUsable() && route->prefix.length() == 0 && kind.type == RouteType::staticConfig;
      }
      bool isInHardware() const { return (route->flags & RTM_F_OFFLOAD_FAILED) == 0; }

      // All but the FEC.
      typename Family::Route fibRoute() const {
         return {.prefix = Family::prefix(route->prefix),
                 .routeType = kind.type,
                 .preference = kind.preference,
                 .metric = route->metric};
      }
   };

   RouteChoice(Topology const& topology, NextHops const& nextHops) : topology_(topology), nextHops_(nextHops) {}

   // None for what serves only some packets, or no VRF.
   std::optional<Candidate> candidateOf(KernelRoute const& route) const {
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
      }
      return Candidate{*vrf, &route, *kind, std::move(resolved.hops)};
   }

   // The first one, with the next hops of those that it is one with. They are usable, of one place and by rank.
   static Candidate& best(std::span<Candidate> candidates) {
      Candidate& best = candidates.front();
      for (Candidate const& other : candidates.subspan(1)) {
         if (Family::joinsRoutes && other.rank() == best.rank() && other.kind.type == best.kind.type) {
            std::ranges::copy(other.hops, std::back_inserter(best.hops));
         }
      }
      best.hops.resize(std::min<std::size_t>(best.hops.size(), Vault::Fib::maxVias));
      return best;
   }

 private:
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

   Topology const& topology_;
   NextHops const& nextHops_;
};

}  // namespace kernel
