#include "state/StaticRoutes.h"

#include "state/text/Sections.h"

#include <simdjson.h>

#include <algorithm>
#include <array>
#include <tuple>

namespace state {
namespace {

using Routing::RouteType;

struct StaticVia {
   Routing::Via via{};
   Routing::RouteMetric metric = 0;
   Zam::String name{};
   bool bfdTracked = false;
};

struct StaticRoute {
   Routing::RouteKey key{};
   RouteType type = RouteType::forward;
   U32 tag = 0;
   bool nonPersistent = false;
   bool ribBypass = false;
   L3::VrfName leakToVrf{};
   Zam::String name{};
   Zam::String nexthopGroup{};
   Routing::RouteMetric metric = 0;
   std::vector<StaticVia> vias{};
};

constexpr auto typeNames = std::to_array<Name<RouteType>>({{"forward", RouteType::forward},
                                                           {"drop", RouteType::drop},
                                                           {"nexthopGroup", RouteType::nexthopGroup},
                                                           {"l2NexthopGroup", RouteType::l2NexthopGroup},
                                                           {"routeCacheConnected", RouteType::routeCacheConnected}});

struct ConfigWord : TextOf<Zam::String> {
   static Zam::String read(Node const& node, Reading&) {
      if (!isConfigWord(node.text())) {
         node.fail("not a word without blanks");
      }
      return Zam::String(node.text());
   }
   static std::string schema(Schema& schema) {
      return patternSchema(schema, "configWord", "^[^\\u0000-\\u0020\\u007f]+$");
   }
};

struct OtherVrf : TextOf<L3::VrfName> {
   static L3::VrfName read(Node const& node, Reading&) {
      std::string_view const name = node.text();
      if (!isConfigWord(name) || name.size() > L3::VrfName::maxLength() || name == L3::VrfName::defaultVrf) {
         node.fail("not a VRF other than the default one");
      }
      return L3::VrfName(name);
   }
};

// An interface that need not be there.
struct InterfaceWord {
   using Value = Lumen::IntfId;
   static Value read(Node const& node, Reading&) {
      if (!isInterfaceWord(node.text())) {
         node.fail("not an interface name");
      }
      return Lumen::IntfId::named(node.text());
   }
   static void write(JsonWriter& out, Writing const&, Value const& intfId) { out.text(intfId.name()); }
   static std::string schema(Schema& schema) { return ConfigWord::schema(schema); }
};

// A via in an EVPN or in the VRF itself, in another VRF, or through an interface.
void checkVia(Node const& node, L3::VrfName const& vrfName, StaticVia const& read) {
   Routing::Via const& via = read.via;
   bool const isEvpn = !via.vtepAddr.isEmpty();
   bool const isElsewhere = !via.egressVrf.isDefaultVrf();
   if (isEvpn &&
       (!via.hop.isEmpty() || via.intfId.isValid() || isElsewhere || via.mplsLabel.isLabel() || read.bfdTracked)) {
      node.fail("a via to a VTEP has no next hop, interface, label, egress VRF or BFD");
   }
   if (isEvpn == via.routerMac.isZero()) {
      node.fail(isEvpn ? "a via to a VTEP needs a router MAC address" : "a router MAC address without a VTEP");
   }
   if (isEvpn && via.vni == Lumen::Vni()) {
      node.fail("a via to a VTEP needs a VNI");
   }
   if (!isEvpn && (via.vni != Lumen::Vni() || via.localIntf.isValid() || via.vtepSipValidation)) {
      node.fail("a VNI, local interface or source VTEP validation without a VTEP");
   }
   if (isElsewhere && via.intfId.isValid()) {
      node.fail("both an interface and an egress VRF");
   }
   if (!isEvpn && !isElsewhere && via.hop.isZero() && !via.intfId.isValid()) {
      node.fail("leads nowhere");
   }
   if (via.mplsLabel.isLabel() && via.hop.isZero() && !isElsewhere) {
      node.fail("a label without a next hop");
   }
   if (isElsewhere && via.egressVrf == vrfName) {
      node.fail("the egress VRF is the route's own");
   }
}

// A next hop that is all zeros is none; where it has to be told, it is the zero of the route's family.
void normalize(Routing::Via& via, Lumen::AddressFamily family) {
   if (!via.hop.isZero()) {
      return;
   }
   bool const isElsewhere = !via.egressVrf.isDefaultVrf();
   bool const isIp6 = family == Lumen::AddressFamily::ipv6;
   via.hop = !isElsewhere ? Lumen::IpGenAddr()
             : isIp6      ? Lumen::IpGenAddr(Lumen::Ip6Addr())
                          : Lumen::IpGenAddr(Lumen::IpAddr());
}

// What is not shown as configuration need not be possible there.
bool isShown(Reading const& reading, StaticRoute const& route) {
   return reading.isConfigured && !route.nonPersistent;
}

void checkConfigured(Node const& node, State const& state, StaticRoute const& route) {
   bool const isIp6 = route.key.prefix.family() == Lumen::AddressFamily::ipv6;
   U32 const maxVias = isIp6 ? state.maxVias6 : state.maxVias;
   if (route.type == RouteType::l2NexthopGroup) {
      node.fail("no command configures a layer-2 nexthop group route");
   }
   if (route.type == RouteType::forward && route.vias.empty()) {
      node.fail("no command configures a forward route without vias");
   }
   if (maxVias != 0 && route.vias.size() > maxVias) {
      node.fail("more vias than the hardware takes, " + std::to_string(maxVias));
   }
   for (StaticVia const& via : route.vias) {
      if (isIp6 && via.via.hop.family() == Lumen::AddressFamily::ipv4) {
         node.fail("an IPv4 next hop of an IPv6 route");
      }
   }
}

// Each attribute where it means something.
void checkRoute(Node const& node, L3::VrfName const& vrfName, StaticRoute const& route) {
   bool const isGroup = route.type == RouteType::nexthopGroup || route.type == RouteType::l2NexthopGroup;
   bool const hasVias = route.type == RouteType::forward || route.type == RouteType::l2NexthopGroup;
   bool const hasEvpnVia =
       std::ranges::any_of(route.vias, [](StaticVia const& via) { return !via.via.vtepAddr.isEmpty(); });
   if (!route.vias.empty() && !hasVias) {
      node.fail("a route of this type has no vias");
   }
   if (route.nexthopGroup.empty() == isGroup || (route.metric != 0 && !isGroup)) {
      node.fail(isGroup ? "member \"nexthopGroup\" is missing" : "a route of this type has no nexthop group or metric");
   }
   if (!route.name.empty() && route.type != RouteType::drop) {
      node.fail("only a drop route has a name; vias have their own");
   }
   if (route.ribBypass && !hasEvpnVia) {
      node.fail("\"ribBypass\" without a via to a VTEP");
   }
   if (!route.leakToVrf.isDefaultVrf() && route.type != RouteType::forward) {
      node.fail("a route of this type is not leaked");
   }
   if (!route.leakToVrf.isDefaultVrf() && route.leakToVrf == vrfName) {
      node.fail("leaked into the VRF that it is in");
   }
   constexpr Lumen::IpAddr firstMulticast(0xe0000000);
   if (route.key.prefix.family() == Lumen::AddressFamily::ipv4 &&
       route.key.prefix.prefix().address() >= firstMulticast) {
      node.fail("the prefix is not unicast");
   }
   if (route.type == RouteType::routeCacheConnected && (route.tag != 0 || route.key.preference != 1)) {
      node.fail("a route-cache route has no tag or preference of its own");
   }
}

void addVia(Routing::Route& route, StaticVia const& read, Node const& node) {
   Routing::Via via = read.via;
   normalize(via, route.key().prefix.family());
   Routing::Via opposite = via;
   opposite.vtepSipValidation = !via.vtepSipValidation;
   bool const isEvpn = !via.vtepAddr.isEmpty();
   if (route.via().contains(via) || (isEvpn && route.via().contains(opposite))) {
      node.fail("one via twice");
   }
   route.viaIs(via, read.metric);
   if (!read.name.empty()) {
      route.viaNextHopNameIs(via, read.name);
   }
   if (read.bfdTracked) {
      route.bfdTrackedIs(via);
   }
}

void addRoute(Routing::RouteList& list, StaticRoute const& read, Node const& node) {
   auto const route = list.routeIs(read.key, read.type);
   route->tagIs(read.tag);
   route->nonPersistentIs(read.nonPersistent);
   route->ribBypassIs(read.ribBypass);
   route->leakToVrfIs(read.leakToVrf);
   route->dropNextHopNameIs(read.name);
   route->nexthopGroupNameIs(read.nexthopGroup);
   route->nexthopGroupMetricIs(read.metric);
   for (StaticVia const& via : read.vias) {
      addVia(*route, via, node);
   }
}

struct StaticViaRecord {
   using Value = StaticVia;
   using Via = Routing::Via;
   static constexpr std::string_view name = "staticVia";
   static constexpr auto members = std::to_array<Member<Value>>({
       member<GenAddr, &Value::via, &Via::hop>("nexthop"),
       member<InterfaceWord, &Value::via, &Via::intfId>("interface"),
       member<NumberOf<Lumen::MplsLabel, Lumen::MplsLabel::maxLabel>, &Value::via, &Via::mplsLabel>("label"),
       member<OtherVrf, &Value::via, &Via::egressVrf>("egressVrf"),
       member<GenAddr, &Value::via, &Via::vtepAddr>("vtep"),
       member<NumberOf<Lumen::Vni, Lumen::Vni::max>, &Value::via, &Via::vni>("vni"),
       member<Mac, &Value::via, &Via::routerMac>("routerMac"),
       member<InterfaceWord, &Value::via, &Via::localIntf>("localInterface"),
       member<Flag, &Value::via, &Via::vtepSipValidation>("sourceVtepValidation"),
       member<Flag, &Value::bfdTracked>("bfd"),
       member<Number<U32>, &Value::metric>("metric"),
       member<ConfigWord, &Value::name>("name"),
   });
   static void check(Node const& node, Reading const& reading, Value const& via) {
      checkVia(node, *reading.vrfName, via);
   }
};

struct StaticRouteRecord {
   using Value = StaticRoute;
   using Key = Routing::RouteKey;
   static constexpr std::string_view name = "staticRoute";
   static constexpr std::string_view rules =
       R"("description":"Interfaces, VRFs and groups that it names need not be there.")";
   static constexpr auto members = std::to_array<Member<Value>>({
       member<GenPrefix, &Value::key, &Key::prefix>("prefix").required(),
       member<Number<U8, 1>, &Value::key, &Key::preference>("preference"),
       member<OneOf<typeNames>, &Value::type>("type"),
       member<Number<U32>, &Value::tag>("tag"),
       member<Flag, &Value::nonPersistent>("nonPersistent").about("It does not outlast a restart."),
       member<Flag, &Value::ribBypass>("ribBypass"),
       member<OtherVrf, &Value::leakToVrf>("leakToVrf"),
       member<ConfigWord, &Value::name>("name").about("Of a drop route; a via has its own."),
       member<ConfigWord, &Value::nexthopGroup>("nexthopGroup"),
       member<Number<U32>, &Value::metric>("metric").about("Of a route to a nexthop group."),
       member<List<Object<StaticViaRecord>>, &Value::vias>("vias"),
   });
   static void check(Node const& node, Reading const& reading, Value const& route) {
      checkRoute(node, *reading.vrfName, route);
      if (isShown(reading, route)) {
         checkConfigured(node, reading.state, route);
      }
   }
};

StaticRoute read(Routing::Route const& route) {
   StaticRoute out{.key = route.key(),
                   .type = route.routeType(),
                   .tag = route.tag(),
                   .nonPersistent = route.nonPersistent(),
                   .ribBypass = route.ribBypass(),
                   .leakToVrf = route.leakToVrf(),
                   .name = route.dropNextHopName(),
                   .nexthopGroup = route.nexthopGroupName(),
                   .metric = route.nexthopGroupMetric()};
   for (auto const& [via, metric] : route.via()) {
      auto const* const name = route.viaNextHopName().find(via);
      out.vias.push_back({via, metric, name != nullptr ? *name : Zam::String(), route.bfdTracked().contains(via)});
   }
   std::ranges::sort(out.vias, {}, [](StaticVia const& via) { return std::tie(via.via, via.metric); });
   return out;
}

// In the order of their keys.
std::vector<Routing::Route const*> sorted(StaticRoutes const& routes) {
   std::vector<Routing::Route const*> all;
   all.reserve(routes.ip->route().size() + routes.ip6->route().size());
   for (auto const& list : {routes.ip, routes.ip6}) {
      for (auto const& [key, route] : list->route()) {
         all.push_back(route.get());
      }
   }
   std::ranges::sort(all, {},
                     [](Routing::Route const* route) { return std::pair(route->key().prefix.family(), route->key()); });
   return all;
}

}  // namespace

StaticRoutes StaticRouteList::read(Node const& node, Reading& reading) {
   if (!isConfigWord(*reading.vrfName)) {
      node.fail("no command can name a VRF that has blanks in its name");
   }
   StaticRoutes routes;
   node.forEachElement([&](Node const& element) {
      StaticRoute const route = Object<StaticRouteRecord>::read(element, reading);
      Routing::RouteList& ofFamily = routes.of(route.key.prefix.family());
      if (ofFamily.route(route.key) != nullptr) {
         element.fail("given twice");
      }
      addRoute(ofFamily, route, element);
   });
   return routes;
}

void StaticRouteList::write(JsonWriter& out, Writing const& writing, StaticRoutes const& routes) {
   out.open('[');
   for (Routing::Route const* const route : sorted(routes)) {
      Object<StaticRouteRecord>::write(out, writing, state::read(*route));
   }
   out.close(']');
}

std::string StaticRouteList::schema(Schema& schema) {
   return List<Object<StaticRouteRecord>>::schema(schema);
}

bool StaticRoutes::operator==(StaticRoutes const& other) const {
   State const state;
   auto const text = [&](StaticRoutes const& routes) {
      std::string out;
      JsonWriter writer(out);
      StaticRouteList::write(writer, Writing(state, configPart), routes);
      return out;
   };
   return text(*this) == text(other);
}

bool isConfigWord(std::string_view text) {
   bool const isOfCommandLine = text == "?" || text.starts_with('|') || text.starts_with("--");
   return !text.empty() && !isOfCommandLine && simdjson::validate_utf8(text) &&
          std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) > ' ' && c != '\x7f'; });
}

bool isInterfaceWord(std::string_view word) {
   constexpr auto others = std::to_array<std::string_view>(
       {"nexthop-group", "cached", "egress-vrf", "label", "track", "vtep", "vni", "router-mac-address",
        "local-interface", "rib-bypass", "source-vtep-validation", "tag", "name", "metric", "leak", "vrf"});
   constexpr std::string_view null0 = "null0";
   auto const isNull0 = [&] {
      return std::ranges::equal(word, null0, {}, [](unsigned char c) { return std::tolower(c); });
   };
   if (!isConfigWord(word) || std::isalpha(static_cast<unsigned char>(word.front())) == 0 || isNull0() ||
       word.find(':') != std::string_view::npos || word.size() > Lumen::IntfId::maxNameLength ||
       std::ranges::find(others, word) != others.end()) {
      return false;
   }
   // What stands for something else, such as FecId(0x1), is no name.
   return Lumen::IntfId::named(word).stringValue() == word;
}

}  // namespace state
