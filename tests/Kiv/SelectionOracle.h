#pragma once

#include "Kiv/common/RouteTypeStrings.h"
#include "tests/Kiv/SorterTesting.h"

#include <bitset>

// What a sorter has to select, found the slow and plain way: lists that are walked from end to end, and prefixes as
// texts of bits. And tables of random content to ask about.
namespace Kiv::Testing {

using Vault::Fib::FecId;
using Vault::Testing::Random;

// The bits that a prefix covers. Prefixes order as these texts do, and one contains another whose text begins with its.
template <class Prefix>
std::string bitsOf(Prefix const& prefix) {
   if constexpr (Prefix::maxLength == 32) {
      return std::bitset<32>(prefix.address().value()).to_string().substr(0, prefix.length());
   } else {
      return (std::bitset<64>(prefix.address().hi()).to_string() + std::bitset<64>(prefix.address().lo()).to_string())
          .substr(0, prefix.length());
   }
}
template <class Prefix>
Prefix prefixOf(std::string bits) {
   auto const length = static_cast<U8>(bits.size());
   bits.resize(Prefix::maxLength, '0');
   auto const word = [&bits](std::size_t at, std::size_t size) { return std::bitset<64>(bits, at, size).to_ullong(); };
   if constexpr (Prefix::maxLength == 32) {
      return {Lumen::IpAddr(static_cast<U32>(word(0, 32))), length};
   } else {
      return {Lumen::Ip6Addr(word(0, 64), word(64, 64)), length};
   }
}

struct ShownVia {
   bool isBackup = false;
   Lumen::IntfId intfId{};
   Lumen::IpGenAddr hop{};

   std::strong_ordering operator<=>(ShownVia const&) const = default;
};

// A selected route with the vias of its FEC. FECs that were made up are all alike here.
template <class Family>
struct Shown {
   typename Family::Route route;
   std::vector<ShownVia> vias;

   bool operator==(Shown const&) const = default;
   friend void PrintTo(Shown const& shown, std::ostream* out) {
      *out << shown.route.prefix << " type " << int{static_cast<U8>(shown.route.routeType)} << " FEC " << std::hex
           << shown.route.fecId.value() << std::dec;
      for (auto const& via : shown.vias) {
         *out << " [" << (via.isBackup ? "backup " : "") << via.hop << "@" << via.intfId << "]";
      }
      *out << "\n";
   }
};

inline bool isMadeUp(FecId fecId) {
   return fecId.adjType() == 4;
}

// A filter, and the vias that it is looking for.
struct Restriction {
   Zam::Ptr<RouteFilterBase const> filter;
   std::function<bool(ShownVia const&)> matches;
};

template <class Family>
struct Request {
   typename Family::Sorter::Inputs inputs;
   std::vector<Restriction> restrictions;
};

template <class Family>
struct World {
   using Route = typename Family::Route;

   // Without vias when the tables have none of that id.
   Vault::Fib::Fec fec(FecId fecId) const {
      auto const table = inputs.forwardingGenStatus ? 2U : fecId.adjType() == 1 ? 1U : 0U;
      auto const found = std::ranges::find(fecs[table], fecId, &Vault::Fib::Fec::fecId);
      return found != fecs[table].end() ? *found : Vault::Fib::Fec();
   }
   Route const* route(std::string const& bits) const {
      auto const found = std::ranges::find(routes, bits, &std::pair<std::string, Route>::first);
      return found != routes.end() ? &found->second : nullptr;
   }

   typename Family::Sorter::Inputs inputs;
   std::vector<std::pair<std::string, Route>> routes;  // in the order of the table
   std::array<std::vector<Vault::Fib::Fec>, 3> fecs;   // of the IPv4, the IPv6 and the generic table
   std::map<U64, std::vector<Lumen::IntfId>> tunnels;  // those that are there, and what they leave through
};

template <class Family>
class SelectionOracle {
 public:
   using Route = typename Family::Route;
   using RouteType = typename Family::RouteType;
   using Prefix = typename Family::Prefix;

   SelectionOracle(World<Family> const& world, Request<Family> const& request)
       : world_(world),
         request_(request.inputs),
         restrictions_(request.restrictions) {
      if (request_.routeCacheConfig) {
         for (auto const& [key, entry] : request_.routeCacheConfig->route()) {
            if (key.vrfId == request_.vrfId && key.prefix.family() == Family::addressFamily) {
               cacheEntries_.emplace_back(bitsOf(Family::prefixOf(key.prefix)), entry);
            }
         }
      }
   }

   // In prefix order.
   std::vector<Shown<Family>> selection() {
      if (request_.hostRoutes) {
         selectHosts();
      } else if (request_.prefix.isNullPrefix()) {
         selectAll();
      } else if (request_.longerPrefixes) {
         selectInside(bitsOf(request_.prefix));
      } else {
         for (auto bits = bitsOf(request_.prefix); !selectExactly(bits) && !bits.empty();) {
            bits.pop_back();
         }
      }
      std::vector<Shown<Family>> all;
      for (auto const& [bits, route] : selected_) {
         all.push_back({route, {}});
         std::ranges::copy_if(viasOf(route.fecId), std::back_inserter(all.back().vias),
                              [this](auto const& via) { return !discards() || matchesAll(via); });
         all.back().route.fecId = isMadeUp(route.fecId) ? FecId::of(4, 0) : route.fecId;
      }
      return all;
   }
   // Those of the tables that it took: the routes' own, and all that they lead to.
   std::set<FecId> cachedFecs() const {
      auto fromTables = cached_;
      std::erase_if(fromTables, isMadeUp);
      return fromTables;
   }

 private:
   void selectAll() {
      for (auto const& [bits, entry] : cacheEntries_) {
         if (world_.route(bits) == nullptr) {
            selectIfShown(routeOf(bits, entry));
         }
      }
      for (auto const& [bits, route] : world_.routes) {
         copyFec(route.fecId);
         selectIfShown(route);
      }
   }
   // The filter sees a FEC only if an earlier route brought it.
   void selectInside(std::string const& outer) {
      for (auto const& [bits, entry] : cacheEntries_) {
         if (bits.starts_with(outer) && world_.route(bits) == nullptr) {
            selectIfShown(routeOf(bits, entry));
         }
      }
      std::vector<std::pair<std::string, Route>> inside;
      std::ranges::copy_if(world_.routes, std::back_inserter(inside),
                           [&outer](auto const& each) { return each.first.starts_with(outer); });
      auto const hostBits = Prefix::maxLength - outer.size();
      if (hostBits < 20 && 10 * (2U << hostBits) < world_.routes.size()) {  // few to look up, many to walk
         std::ranges::sort(inside, {}, [](auto const& each) { return std::pair(each.first.size(), each.first); });
      }
      for (auto const& [bits, route] : inside) {
         if (selectIfShown(route)) {
            copyFec(route.fecId);
         }
      }
   }
   bool selectExactly(std::string const& wanted) {
      if (auto const* const route = world_.route(wanted)) {
         copyFec(route->fecId);
         if (selectIfShown(*route)) {
            return true;
         }
      }
      return std::ranges::any_of(cacheEntries_, [&](auto const& each) {
         return each.first == wanted && selectIfShown(routeOf(wanted, each.second));
      });
   }
   void selectHosts() {
      for (auto const& [bits, route] : world_.routes) {
         bool const hasType = routeTypeStringsFind(route.routeType) != nullptr && route.routeType != RouteType::unknown;
         if (bits.size() == Prefix::maxLength && hasType) {
            copyFec(route.fecId);
            selected_[bits] = route;
         }
      }
      for (auto const& [key, attached] : request_.attachedRouteStatus->route()) {
         auto const prefix = Prefix(Family::addrOf(key.address), Prefix::maxLength);
         if (attached.active && attached.vrfId == request_.vrfId && world_.route(bitsOf(prefix)) == nullptr) {
            auto& route = selected_[bitsOf(prefix)];
            route.prefix = prefix;
            route.routeType = RouteType::attached;
            route.fecId = route.fecId ? route.fecId : newFecId();
            madeUp_[route.fecId].insert({false, key.intfId, {}});
         }
      }
   }

   Route routeOf(std::string const& bits, Routing::Rib::RouteConfigEntry const& entry) {
      static std::map<Routing::RouteType, RouteType> const types{
          {Routing::RouteType::forward, RouteType::routeCacheForward},
          {Routing::RouteType::drop, RouteType::drop},
          {Routing::RouteType::nexthopGroup, RouteType::nexthopGroup},
          {Routing::RouteType::l2NexthopGroup, RouteType::l2NexthopGroup},
          {Routing::RouteType::routeCacheConnected, RouteType::routeCacheConnected}};
      Route route;
      route.prefix = prefixOf<Prefix>(bits);
      route.routeType = types.at(entry.routeType);
      route.preference = entry.preference;
      route.metric = entry.metric;
      route.fecId = entry.fecId != 0 ? FecId(entry.fecId) : newFecId();
      if (isMadeUp(route.fecId)) {
         for (auto const& via : entry.vias) {
            madeUp_[route.fecId].insert({false, via.intfId, via.hop});
         }
      }
      copyFec(route.fecId);
      return route;
   }
   FecId newFecId() {
      auto const fecId = FecId::of(4, madeUp_.size() + 1);
      madeUp_[fecId];
      return fecId;
   }

   void copyFec(FecId fecId) {
      std::vector<FecId> pending{fecId};
      while (!pending.empty()) {
         FecId const next = pending.back();
         pending.pop_back();
         if (next && cached_.insert(next).second && !isMadeUp(next) && next.adjType() != 24) {
            for (auto const& via : world_.fec(next).vias) {
               if (!forwardsIntoVrf(via)) {
                  pending.emplace_back(via.intfId.fecId());
               }
            }
            for (auto const& via : viasOf(next)) {
               follow(via.intfId.tunnelId(), pending, 4);
            }
         }
      }
   }
   // More levels than there are tunnels, which may run in a circle.
   void follow(U64 tunnel, std::vector<FecId>& pending, U32 levels) const {
      auto const found = world_.tunnels.find(tunnel);
      if (levels != 0 && found != world_.tunnels.end()) {
         for (auto const& intfId : found->second) {
            pending.emplace_back(intfId.fecId());
            follow(intfId.tunnelId(), pending, levels - 1);
         }
      }
   }
   static bool forwardsIntoVrf(Vault::Fib::Via const& via) {
      auto const action = static_cast<U8>(via.forwardingAction);
      return action == 1 || action == 3;
   }
   std::set<ShownVia> viasOf(FecId fecId) const {
      if (isMadeUp(fecId)) {
         return madeUp_.at(fecId);
      }
      std::set<ShownVia> shown;
      auto const fec = fecId.adjType() == 24 ? Vault::Fib::Fec() : world_.fec(fecId);
      for (std::size_t i = 0; i < fec.vias.size(); ++i) {
         auto const& via = fec.vias[i];
         ShownVia as{fec.primaryVias != 0 && i >= fec.primaryVias, via.intfId, via.hop};
         if (via.tunnelId != 0 && via.tunnelId >> 44U != 9) {
            as.intfId = Lumen::IntfId::fromTunnelId(via.tunnelId);
         }
         if (forwardsIntoVrf(via)) {
            as.intfId = Lumen::IntfId::fromFecId(via.forwardingVrf);
         }
         shown.insert(as);
      }
      return shown;
   }
   bool discards() const { return request_.routeFilterColl && request_.routeFilterColl->discardNonMatchingVia(); }
   bool matchesAll(ShownVia const& via) const {
      return std::ranges::all_of(restrictions_, [&](auto const& each) { return each.matches(via); });
   }
   bool passFilters(std::set<ShownVia> const& vias) const {
      if (discards()) {
         return restrictions_.empty() || std::ranges::any_of(vias, [this](auto& via) { return matchesAll(via); });
      }
      return std::ranges::all_of(restrictions_, [&](auto& each) { return std::ranges::any_of(vias, each.matches); });
   }

   bool selectIfShown(Route const& route) {
      bool const shown = isShown(route);
      if (shown) {
         selected_[bitsOf(route.prefix)] = route;
      }
      return shown;
   }
   bool isShown(Route const& route) const {
      auto const* const strings = routeTypeStringsFind(route.routeType);
      if (strings == nullptr || route.routeType == RouteType::unknown || route.routeType == RouteType::attached ||
          (!request_.protocol.empty() && std::string_view(request_.protocol) != strings->protocolCode)) {
         return false;
      }
      bool const ownPrefix = route.routeType < RouteType::attached;
      if (ownPrefix ? !isOfInterface(route) : !isPrintable(route)) {
         return false;
      }
      if (route.routeType == RouteType::martian && !request_.showHidden) {
         return false;
      }
      return passFilters(cached_.contains(route.fecId) ? viasOf(route.fecId) : std::set<ShownVia>());
   }
   bool isOfInterface(Route const& route) const {
      bool found = request_.showHidden && route.prefix.stringValue() == "fe80::/10";
      if (request_.routeFilterColl && request_.routeFilterColl->filterAll()) {
         return found;
      }
      for (auto const& [intfId, intf] : request_.ipStatus->intfStatus()) {
         auto addresses = intf.secondaryAddr;
         addresses.push_back(intf.primaryAddr);
         for (auto const& address : addresses) {
            bool const isSame =
                address.address() == route.prefix.address() && address.length() == route.prefix.length();
            bool const ownVrf = route.srcVrfId == Vrf::VrfIdMap::noVrf && intf.vrfId == request_.vrfId;
            bool const isLoopback = Prefix::maxLength == 32 && intf.loopback && address.subnet() == route.prefix &&
                                    (route.srcVrfId == intf.vrfId || ownVrf);
            bool const isAssigned = address != typename Family::AddrWithMask();
            found = found || (isAssigned && intf.vrfName == request_.vrfName && (isSame || isLoopback));
         }
      }
      return found;
   }
   bool isPrintable(Route const& route) const {
      if (route.routeType == RouteType::nexthopGroup || (route.fecId && !cached_.contains(route.fecId))) {
         return true;
      }
      auto const vias = route.fecId ? viasOf(route.fecId) : std::set<ShownVia>();
      bool const usable = std::ranges::any_of(vias,
                                              [this](auto const& via) {
                                                 bool const isTunnel =
                                                     via.intfId.kind() == Lumen::IntfId::Kind::dynamicTunnel;
                                                 return isTunnel ? world_.tunnels.contains(via.intfId.tunnelId())
                                                                 : via.intfId.isValid();
                                              }) ||
                          (!isMadeUp(route.fecId) && route.fecId.adjType() != 24 &&
                           std::ranges::any_of(world_.fec(route.fecId).vias, [this](auto const& via) {
                              return via.tunnelId >> 44U == 9 && world_.tunnels.contains(via.tunnelId);
                           }));
      return route.fecId && (usable || vias.empty() || request_.showHidden);
   }

   World<Family> const& world_;
   typename Family::Sorter::Inputs const& request_;
   std::vector<Restriction> const& restrictions_;
   std::vector<std::pair<std::string, Routing::Rib::RouteConfigEntry>> cacheEntries_;  // of this VRF and family
   std::set<FecId> cached_;
   std::map<FecId, std::set<ShownVia>> madeUp_;
   std::map<std::string, Route> selected_;
};

}  // namespace Kiv::Testing
