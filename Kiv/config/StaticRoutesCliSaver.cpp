#include "Kiv/config/StaticRoutesCliSaver.h"

#include "Kiv/common/Trace.h"
#include "Kiv/common/Watchdog.h"
#include "Lumen/TextValue.h"
#include "Zam/ActivityLock.h"
#include "Zam/Error.h"
#include "Zam/WordSort.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

namespace Kiv {

namespace {

using Lumen::IpGenAddr;
using Routing::Route;

void append(std::string& out, std::string_view text) {
   out += text;
}
void append(std::string& out, U32 number) {
   std::array<char, 10> text;
   out.append(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
}
template <Lumen::TextValue T>
void append(std::string& out, T const& value) {
   std::array<char, T::maxTextLength> text;
   out.append(text.data(), value.formatTo(text.data()));
}

// Writes what follows the prefix on the lines of one route after the other. Every piece begins with a blank.
class TailWriter {
 public:
   TailWriter(bool saveAll, RoutingConsts const& defaults) : saveAll_(saveAll), defaults_(defaults) {}

   NexthopInfo nexthopInfo(Route const& route) {
      switch (route.routeType()) {
         case Routing::RouteType::drop:
            return dropRoute(route);
         case Routing::RouteType::nexthopGroup:
            return nexthopGroupRoute(route);
         case Routing::RouteType::routeCacheConnected:
            // A marker in the configuration; what else the route has comes from the route cache.
            return {{}, " cached"};
         // An L2 nexthop group has no command of its own: what can be saved of such a route is its vias.
         case Routing::RouteType::l2NexthopGroup:
         case Routing::RouteType::forward:
            break;
      }
      return viaRoute(route);
   }

 private:
   template <class... Parts>
   void piece(Parts const&... parts) {
      (append(text_, parts), ...);
   }

   NexthopInfo dropRoute(Route const& route) {
      text_ = " Null0";
      preferenceAndTag(route);
      name(route.dropNextHopName());
      return {{}, std::string_view(text_)};
   }

   NexthopInfo nexthopGroupRoute(Route const& route) {
      text_ = " nexthop-group";
      if (!route.nexthopGroupName().empty()) {
         piece(" ", route.nexthopGroupName());
      }
      preferenceAndTag(route);
      metric(route.nexthopGroupMetric());
      return {{}, std::string_view(text_)};
   }

   NexthopInfo viaRoute(Route const& route) {
      NexthopInfo info;
      info.sortedVia.reserve(route.via().size());
      for (auto const& [via, viaMetric] : route.via()) {
         text_.clear();
         nexthop(route, via);
         evpn(route, via);
         preferenceAndTag(route);
         if (auto const* const viaName = route.viaNextHopName().find(via); viaName != nullptr && !viaName->empty()) {
            name(*viaName);
         }
         metric(viaMetric);
         if (!route.leakToVrf().isDefaultVrf()) {
            piece(" leak vrf ", route.leakToVrf());
         }
         info.sortedVia.valueOf(via) = std::string_view(text_);
      }
      return info;
   }

   void nexthop(Route const& route, Routing::Via const& via) {
      bool const isInOtherVrf = !via.egressVrf.isDefaultVrf();
      if (isInOtherVrf) {
         piece(" egress-vrf ", via.egressVrf);
      }
      if (via.intfId.isValid()) {
         piece(" ", via.intfId);
      }
      if (!via.hop.isZero() || isInOtherVrf) {
         Zam::assertThat(via.vtepAddr.isEmpty(), "!via.vtepAddr()", traceSource, "Zam::String save()");
         piece(" ", via.hop.isEmpty() ? zeroAddress(route) : via.hop);
         if (via.mplsLabel.value() != Lumen::MplsLabel::noLabel) {
            piece(" label ", via.mplsLabel);
         }
      }
      if (route.bfdTracked().contains(via)) {
         piece(" track bfd");
      }
   }

   // The bypass of the RIB is a property of the route that only the command for an EVPN via can set.
   void evpn(Route const& route, Routing::Via const& via) {
      if (via.vtepAddr.isEmpty()) {
         return;
      }
      piece(" vtep ", via.vtepAddr, " vni ", via.vni, " router-mac-address ", via.routerMac);
      if (via.localIntf.isValid()) {
         piece(" local-interface ", via.localIntf);
      }
      piece(route.ribBypass() ? " rib-bypass" : "", via.vtepSipValidation ? " source-vtep-validation" : "");
   }

   void preferenceAndTag(Route const& route) {
      if (saveAll_ || route.key().preference != defaults_.defaultStaticRoutePreference) {
         piece(" ", U32{route.key().preference});
      }
      if (saveAll_ || route.tag() != defaults_.defaultStaticRouteTag) {
         piece(" tag ", route.tag());
      }
   }
   // Without regard to saveAll: a name that is the default's is no command, and neither is such a metric.
   void name(Zam::String const& name) {
      if (name != defaults_.defaultStaticRouteName) {
         piece(" name ", name);
      }
   }
   void metric(Routing::RouteMetric metric) {
      if (metric != defaults_.defaultStaticRouteMetric) {
         piece(" metric ", metric);
      }
   }

   // The next hop of a via that has none, where one has to be written.
   static IpGenAddr zeroAddress(Route const& route) {
      bool const isIp6 = route.key().prefix.family() == Lumen::AddressFamily::ipv6;
      return isIp6 ? IpGenAddr(Lumen::Ip6Addr()) : IpGenAddr(Lumen::IpAddr());
   }

   bool saveAll_;
   RoutingConsts const& defaults_;
   std::string text_;
};

// Asks for the memory of what will be read soon.
template <class T>
void prefetch(T const& object) {
   constexpr std::size_t cacheLine = 64;
   for (std::size_t at = 0; at < sizeof(T); at += cacheLine) {
      __builtin_prefetch(reinterpret_cast<char const*>(&object) + at);
   }
}
constexpr std::size_t ahead = 8;

RouteSortKey sortKey(Routing::RouteKey const& key) {
   return {{}, key.prefix, key.preference};
}

// The routes to save, in the order of their lines. They are held: the list may change whenever the activity lock is
// released, and a hash map that changes cannot be walked on.
//
// The map alone is walked in its own order. Routes are first touched in the order of their lines, which is, more often
// than not, the one in which a saved configuration made them, and so that of their memory.
std::vector<Zam::Ptr<Route const>> persistentRoutes(Routing::RouteList const& routeList) {
   std::vector<Route const*> routes;
   std::vector<Zam::WordAndIndex> order;
   routes.reserve(routeList.route().size());
   order.reserve(routeList.route().size());
   for (auto const& [key, route] : routeList.route()) {
      order.push_back({sortKey(key).sortWord(), static_cast<U32>(routes.size())});
      routes.push_back(route.get());
   }
   auto const keyOf = [&routes](U32 index) { return sortKey(routes[index]->key()); };
   Zam::sortByWord(order, [&](U32 a, U32 b) { return keyOf(a) < keyOf(b); });
   std::vector<Zam::Ptr<Route const>> held;
   held.reserve(order.size());
   for (std::size_t i = 0; i != order.size(); ++i) {
      __builtin_prefetch(routes[order[std::min(i + ahead, order.size() - 1)].index]);
      if (auto const* const route = routes[order[i].index]; !route->nonPersistent()) {
         held.emplace_back(route);
      }
   }
   return held;
}

// Fills the saver; returns the length of all texts. Its end lets go of the routes, which takes the activity lock.
std::size_t fill(StaticRoutesCliSaver& saver, Routing::RouteList const& routeList, TailWriter writer) {
   std::size_t length = 0;
   U32 count = 0;
   auto const routes = persistentRoutes(routeList);
   for (std::size_t i = 0; i != routes.size(); ++i) {
      prefetch(*routes[std::min(i + 2 * ahead, routes.size() - 1)]);
      if (auto const& vias = routes[std::min(i + ahead, routes.size() - 1)]->via(); !vias.empty()) {
         prefetch(*vias.begin());
      }
      auto const& route = routes[i];
      auto info = writer.nexthopInfo(*route);
      length += info.nexthopCmd.length();
      for (auto const& [via, tail] : info.sortedVia) {
         length += tail.length();
      }
      saver.sortedRouteIs(sortKey(route->key()), std::move(info));
      allowWatchdog(count);
   }
   return length;
}

std::string lines(StaticRoutesCliSaver const& saver, std::string_view routeCmd, std::size_t expectedSize) {
   std::string out;
   out.reserve(expectedSize);
   std::array<char, Lumen::IpGenPrefix::maxTextLength> text;
   for (auto const& [key, info] : saver.sortedRoute) {
      std::string_view const prefix(text.data(), key.prefix.formatTo(text.data()));
      auto const line = [&out, routeCmd, prefix](std::string_view tail) {
         out.append(routeCmd).append(prefix).append(tail) += '\n';
      };
      if (!info.nexthopCmd.empty()) {
         line(info.nexthopCmd);
         continue;
      }
      for (auto const& [via, tail] : info.sortedVia) {
         line(tail);
      }
   }
   return out;
}

}  // namespace

Zam::String StaticRoutesCliSaver::save(Zam::Ptr<Routing::RouteList const> const& routeList, bool saveAll,
                                       Zam::String const& routeCmd, RoutingConsts const& routingConsts) {
   Zam::assertThat(routeList != nullptr, "routeList", traceSource, "Zam::String save()");
   constexpr std::size_t typicalPrefix = 18;
   std::size_t const tails = fill(*this, *routeList, {saveAll, routingConsts});
   Zam::ScopedUnlock const unlocked;  // from here on only the saver's own texts are read
   return lines(*this, routeCmd, tails + sortedRoute.size() * (routeCmd.length() + typicalPrefix + 1));
}

}  // namespace Kiv
