#include "Kiv/selection/Selection.h"

#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/common/Trace.h"
#include "Kiv/selection/MadeUpRoutes.h"

#include <array>
#include <span>
#include <utility>
#include <vector>

namespace Kiv {

namespace {

bool isLinkLocal(Lumen::Ip6Prefix const& prefix) {
   static Lumen::Ip6Prefix const linkLocal = Lumen::Ip6Prefix::parse("fe80::/10");
   return prefix == linkLocal;
}
bool isLinkLocal(Lumen::Prefix const& /* prefix */) {
   return false;
}

}  // namespace

// Given its FEC, if that is in the cache.
template <class Family>
bool Selection<Family>::isPrintable(Route const& route, FecRecord const* fec) const {
   if (route.routeType == Family::RouteType::nexthopGroup) {
      return true;
   }
   if (!route.fecId) {
      return false;
   }
   return fec == nullptr || fec->isResolved || fec->viaCount == 0 || request_.showHidden;
}

template <class Family>
bool Selection<Family>::isHiddenByType(Route const& route) const {
   auto const type = route.routeType;
   if (routeTypeStringsFind(type) == nullptr) {
      trace(0, "filterRoute", "Skipping route for ", route.prefix, " of unexpected type ", int{static_cast<U8>(type)});
      return true;
   }
   return type == Family::RouteType::unknown || type == Family::RouteType::attached ||
          !protocolMatch(route, request_.protocol);
}

// True when the route must not be shown; a route that is let through is counted.
template <class Family>
bool Selection<Family>::filterRoute(Route const& route, FecRecord const* fec) {
   if (isHiddenByType(route)) {
      return true;
   }
   if (!Family::isReceive(route.routeType)) {
      bool const isMartian = route.routeType == Family::RouteType::martian;
      if (!isPrintable(route, fec) || (isMartian && !request_.showHidden)) {
         return true;
      }
   } else if (!ownAddresses_.has(route, tables_.vrfId) && (!request_.showHidden || !isLinkLocal(route.prefix))) {
      return true;
   }
   auto const& filters = request_.filters;
   if (filters && !filters->empty() && filters->filter(fec != nullptr ? fecs_.handle(*fec) : nullptr)) {
      return true;
   }
   ++selectedRoutes_;
   return false;
}

// Stores the route if the filter lets it through; the filter sees the FEC if it is given.
template <class Family>
bool Selection<Family>::selected(Route const& route, FecRecord* fec) {
   if (filterRoute(route, fec)) {
      return false;
   }
   if (fec != nullptr) {
      fec->use();
   }
   routes_.insertOrReplace(route.prefix, route);
   return true;
}

template <class Family>
void Selection<Family>::selectFromRouteCache(Prefix const& within) {
   tables_.walkRouteCache([&](auto const& prefix, auto const& entry) {
      if (within.contains(prefix)) {
         auto const route = createRouteCacheRoute<Family>(fecs_, routes_, prefix, entry);
         selected(route, fecs_.record(route.fecId));
      }
   });
}

// Routes that wait, a few at a time, for their FECs to come from memory: with thousands of them in use, the walk would
// stand still for nearly every one.
template <class Family>
class Selection<Family>::Waiting {
 public:
   explicit Waiting(Selection& selection) : selection_(selection) {}

   void add(Route const& route) {
      auto* const fec = selection_.fecs_.copyAdjacency(route.fecId);
      __builtin_prefetch(fec);
      routes_[count_] = {route, fec};
      if (++count_ == routes_.size()) {
         selectAll();
      }
   }
   void selectAll() {
      for (auto const& [route, fec] : std::span(routes_).first(count_)) {
         selection_.selected(route, fec);
      }
      count_ = 0;
   }

 private:
   Selection& selection_;
   std::array<std::pair<Route, FecRecord*>, 16> routes_{};
   std::size_t count_ = 0;
};

template <class Family>
void Selection<Family>::filterWholeTable() {
   selectFromRouteCache(Prefix(typename Family::Addr(), 0));
   Waiting waiting(*this);
   tables_.walkFib([&](auto const& route) { waiting.add(route); });
   waiting.selectAll();
}

// Asks the table for every prefix that a prefix contains, shorter ones first.
template <class Family>
template <class Visit>
void Selection<Family>::lookUpAllWithin(Prefix const& within, Visit&& visit) const {
   constexpr auto maxLength = Prefix::maxLength;
   U32 count = 0;
   for (U8 length = within.length(); length <= maxLength; ++length) {
      U64 const prefixes = U64{1} << (length - within.length());
      for (U64 i = 0; i < prefixes; ++i) {
         auto const address = Family::withLowBits(within.address(), i << (maxLength - length));
         if (auto const route = tables_.fibRoute(Prefix(address, length))) {
            visit(*route);
         }
         allowWatchdog(count);
      }
   }
}

// Whether a prefix contains so few others that asking for each is cheaper than walking over the table. A lookup, which
// goes anywhere in memory, costs about as much as walking over ten routes.
template <class Family>
bool Selection<Family>::worthLookingUpAll() const {
   constexpr U64 routesPerLookup = 10;
   auto const& table = tables_.routingStatus;
   unsigned const hostBits = Prefix::maxLength - request_.prefix.length();
   return table && hostBits < 32 && (U64{2} << hostBits) * routesPerLookup < table->routes();
}

// The filter runs before the FEC is copied here, unlike in the other requests, so it sees a FEC only when an earlier
// route brought it in; what it shows depends on that order and stays so.
template <class Family>
void Selection<Family>::filterLongerPrefixes() {
   auto const& within = request_.prefix;
   selectFromRouteCache(within);
   auto const select = [&](auto const& route) {
      auto* const known = fecs_.record(route.fecId);
      if (selected(route, known) && known == nullptr && route.fecId) {
         fecs_.copyAdjacency(route.fecId)->use();
      }
   };
   if (worthLookingUpAll()) {
      lookUpAllWithin(within, select);
   } else {
      tables_.walkFib([&](auto const& route) {
         if (within.contains(route.prefix)) {
            select(route);
         }
      });
   }
}

// From the requested length down, in the FIB and then in the route cache; a route that the filter hides does not end
// the search.
template <class Family>
void Selection<Family>::filterLongestMatch() {
   auto const& requested = request_.prefix;
   for (int length = requested.length(); length >= 0; --length) {
      auto const prefix = requested.truncated(static_cast<U8>(length));
      if (auto const route = tables_.fibRoute(prefix); route && selected(*route)) {
         return;
      }
      if (auto const route = routeCacheRoute(tables_, fecs_, routes_, prefix);
          route && selected(*route, fecs_.record(route->fecId))) {
         return;
      }
   }
}

// The neighbours on the VRF's interfaces that the FIB has no host route for.
template <class Family>
void Selection<Family>::selectAttachedHosts() {
   if (!tables_.attachedRouteStatus) {
      return;
   }
   auto const isOurs = [this](auto const& key, auto const& attached) {
      return attached.active && attached.vrfId == tables_.vrfId && key.address.family() == Family::addressFamily;
   };
   auto const& neighbors = tables_.attachedRouteStatus->route();
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
      if (attached != nullptr && isOurs(key, *attached) && !tables_.fibRoute(Prefix(address, Prefix::maxLength))) {
         auto const route = createAttachedRoute<Family>(fecs_, routes_, address, key.intfId);
         routes_.insertOrReplace(route.prefix, route);
      }
      allowWatchdog(count);
   }
}

template <class Family>
void Selection<Family>::filterPrefixes() {
   if (!request_.filters || !request_.filters->filterAll()) {
      ownAddresses_.record(tables_);
   }
   if (request_.prefix.isNullPrefix()) {
      filterWholeTable();
   } else if (request_.longerPrefixes) {
      filterLongerPrefixes();
   } else {
      filterLongestMatch();
   }
}

template <class Family>
void Selection<Family>::filterHostPrefixes() {
   auto const unshown = [](auto type) {
      return type == Family::RouteType::unknown || routeTypeStringsFind(type) == nullptr;
   };
   tables_.walkFib([&](auto const& route) {
      if (route.prefix.length() == Prefix::maxLength && !unshown(route.routeType)) {
         fecs_.copyAdjacency(route.fecId);
         routes_.insertOrReplace(route.prefix, route);
      }
   });
   selectAttachedHosts();
}

template class Selection<Ipv4>;
template class Selection<Ipv6>;

}  // namespace Kiv
