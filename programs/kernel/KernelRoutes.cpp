#include "programs/kernel/KernelRoutes.h"

#include <linux/netlink.h>
#include <algorithm>
#include <utility>

namespace kernel {

namespace {

bool isIp6(KernelRoute const& route) {
   return route.prefix.family() == Lumen::AddressFamily::ipv6;
}

// The way of a next hop, whatever its share; the kernel may find it dead without a word.
bool isSameWay(Hop one, Hop const& other) {
   one.weight = other.weight;
   one.dead = other.dead;
   return (one <=> other) == 0;
}

bool haveSameHops(KernelRoute const& one, KernelRoute const& other) {
   return std::ranges::equal(one.hops, other.hops,
                             [](Hop const& a, Hop const& b) { return a.weight == b.weight && isSameWay(a, b); });
}

// Told anew, with other flags or other next hops behind its next-hop object.
bool isSame(KernelRoute const& one, KernelRoute const& other) {
   auto const kind = [](KernelRoute const& r) { return std::tie(r.type, r.protocol, r.scope, r.nextHopId); };
   return kind(one) == kind(other) && (one.nextHopId != 0 || haveSameHops(one, other));
}

bool isOfLegs(KernelRoute const& route) {
   return isIp6(route) && route.nextHopId == 0 && !route.hops.empty() &&
          std::ranges::none_of(route.hops, [](Hop const& hop) { return hop.gateway.isEmpty(); });
}

bool hasHop(KernelRoute const& route, Hop const& hop) {
   return std::ranges::any_of(route.hops, [&](Hop const& own) { return isSameWay(own, hop); });
}

bool hasAllHops(KernelRoute const& route, KernelRoute const& others) {
   return std::ranges::all_of(others.hops, [&](Hop const& hop) { return hasHop(route, hop); });
}

// The kernel adds legs at the end, but may tell the new one first.
void orderHopsAs(KernelRoute const& earlier, KernelRoute& route) {
   std::ranges::stable_sort(route.hops, {}, [&](Hop const& hop) {
      return std::ranges::find_if(earlier.hops, [&](Hop const& own) { return isSameWay(own, hop); }) -
             earlier.hops.begin();
   });
}

}  // namespace

void KernelRoutes::append(KernelRoute route) {
   routes_.insert(routes_.end(), std::move(route));
}

void KernelRoutes::routeIs(KernelRoute route, U16 flags) {
   auto place = find(route, [&](KernelRoute const& own) { return isSame(own, route); });
   if (place == routes_.end() && (flags & NLM_F_REPLACE) != 0) {
      place = find(route, [&](KernelRoute const& own) { return isOfLegs(own) == isOfLegs(route); });
      place = place != routes_.end() ? place : find(route, [](KernelRoute const&) { return true; });
   } else if (place == routes_.end() && isOfLegs(route)) {
      place = find(route, [&](KernelRoute const& own) { return isOfLegs(own) && hasAllHops(route, own); });
      if (place != routes_.end()) {
         orderHopsAs(*place, route);
      }
   }
   if (place != routes_.end()) {
      replace(place, std::move(route));
   } else if (isIp6(route) || (flags & NLM_F_APPEND) != 0) {
      routes_.insert(std::move(route));
   } else {
      auto const first = routes_.lower_bound(route);
      routes_.insert(first, std::move(route));
   }
}

void KernelRoutes::routeDel(KernelRoute const& route) {
   auto place = find(route, [&](KernelRoute const& own) { return isSame(own, route); });
   if (place == routes_.end() && isOfLegs(route)) {
      place = find(route, [&](KernelRoute const& own) { return isOfLegs(own) && hasAllHops(own, route); });
   }
   if (place == routes_.end()) {
      return;
   }
   KernelRoute left = *place;
   std::erase_if(left.hops, [&](Hop const& hop) { return !isOfLegs(route) || hasHop(route, hop); });
   if (left.hops.size() == 1) {
      left.hops.front().weight = 1;  // as the kernel tells a single one
   }
   left.hops.empty() ? void(routes_.erase(place)) : replace(place, std::move(left));
}

void KernelRoutes::onlyRouteIs(KernelRoute route) {
   placeDel(placeOf(route));
   routes_.insert(std::move(route));
}

void KernelRoutes::placeDel(Place const& place) {
   auto const [first, last] = routes_.equal_range(place);
   routes_.erase(first, last);
}

template <class Matches>
KernelRoutes::Set::iterator KernelRoutes::find(KernelRoute const& like, Matches&& matches) const {
   auto const [first, last] = routes_.equal_range(like);
   auto const found = std::find_if(first, last, matches);
   return found != last ? found : routes_.end();
}

void KernelRoutes::replace(Set::iterator place, KernelRoute route) {
   auto node = routes_.extract(place++);
   node.value() = std::move(route);
   routes_.insert(place, std::move(node));
}

}  // namespace kernel
