#include "programs/state/StaticRoutes.h"

#include "programs/state/SnapshotContext.h"

#include <algorithm>

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
   StaticRoutesOf const& of;
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

constexpr auto typeNames =
    std::to_array<std::pair<std::string_view, RouteType>>({{"forward", RouteType::forward},
                                                           {"drop", RouteType::drop},
                                                           {"nexthopGroup", RouteType::nexthopGroup},
                                                           {"l2NexthopGroup", RouteType::l2NexthopGroup},
                                                           {"routeCacheConnected", RouteType::routeCacheConnected}});

Zam::String configWord(Node const& node) {
   if (!isConfigWord(node.text())) {
      node.fail("not a word without blanks");
   }
   return Zam::String(node.text());
}

L3::VrfName otherVrf(Node const& node) {
   std::string_view const name = node.text();
   if (!isConfigWord(name) || name.size() > L3::VrfName::maxLength() || name == L3::VrfName::defaultVrf) {
      node.fail("not a VRF other than the default one");
   }
   return L3::VrfName(name);
}

Lumen::IntfId intfNamed(Node const& node) {
   if (!isInterfaceWord(node.text())) {
      node.fail("not an interface name");
   }
   return Lumen::IntfId::named(node.text());
}

constexpr auto viaMembers = std::to_array<Member<StaticVia>>({
    {"nexthop", [](Node const& n, StaticVia& v) { v.via.hop = genAddrOf(n); }},
    {"interface", [](Node const& n, StaticVia& v) { v.via.intfId = intfNamed(n); }},
    {"label",
     [](Node const& n, StaticVia& v) {
        v.via.mplsLabel = Lumen::MplsLabel(static_cast<U32>(n.number(Lumen::MplsLabel::maxLabel)));
     }},
    {"egressVrf", [](Node const& n, StaticVia& v) { v.via.egressVrf = otherVrf(n); }},
    {"vtep", [](Node const& n, StaticVia& v) { v.via.vtepAddr = genAddrOf(n); }},
    {"vni", [](Node const& n, StaticVia& v) { v.via.vni = Lumen::Vni(static_cast<U32>(n.number(Lumen::Vni::max))); }},
    {"routerMac", [](Node const& n, StaticVia& v) { v.via.routerMac = n.parsed<Lumen::EthAddr>("a MAC address"); }},
    {"localInterface", [](Node const& n, StaticVia& v) { v.via.localIntf = intfNamed(n); }},
    {"sourceVtepValidation", [](Node const& n, StaticVia& v) { v.via.vtepSipValidation = n.boolean(); }},
    {"bfd", [](Node const& n, StaticVia& v) { v.bfdTracked = n.boolean(); }},
    {"metric", [](Node const& n, StaticVia& v) { v.metric = n.number<U32>(); }},
    {"name", [](Node const& n, StaticVia& v) { v.name = configWord(n); }},
});

// A via in an EVPN or in the VRF itself, in another VRF, or through an interface.
void checkVia(Node const& node, StaticVia const& read) {
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

void readVias(Node const& list, StaticRoute& route) {
   list.forEachElement([&](Node const& node) {
      StaticVia via;
      readObject(node, viaMembers, via);
      checkVia(node, via);
      if (!via.via.egressVrf.isDefaultVrf() && via.via.egressVrf == route.of.vrfName) {
         node.fail("the egress VRF is the route's own");
      }
      route.vias.push_back(std::move(via));
   });
}

constexpr auto routeMembers = std::to_array<Member<StaticRoute>>({
    {"prefix", [](Node const& n, StaticRoute& r) { r.key.prefix = genPrefixOf(n); }, true},
    {"preference", [](Node const& n, StaticRoute& r) { r.key.preference = numberFrom<U8>(n, 1); }},
    {"type", [](Node const& n, StaticRoute& r) { r.type = oneOf(n, typeNames); }},
    {"tag", [](Node const& n, StaticRoute& r) { r.tag = n.number<U32>(); }},
    {"nonPersistent", [](Node const& n, StaticRoute& r) { r.nonPersistent = n.boolean(); }},
    {"ribBypass", [](Node const& n, StaticRoute& r) { r.ribBypass = n.boolean(); }},
    {"leakToVrf", [](Node const& n, StaticRoute& r) { r.leakToVrf = otherVrf(n); }},
    {"name", [](Node const& n, StaticRoute& r) { r.name = configWord(n); }},
    {"nexthopGroup", [](Node const& n, StaticRoute& r) { r.nexthopGroup = configWord(n); }},
    {"metric", [](Node const& n, StaticRoute& r) { r.metric = n.number<U32>(); }},
    {"vias", readVias},
});

// What is not shown as configuration need not be possible there.
bool isShown(StaticRoute const& route) {
   return route.of.configured && !route.nonPersistent;
}

void checkConfigured(Node const& node, StaticRoute const& route) {
   bool const isIp6 = route.key.prefix.family() == Lumen::AddressFamily::ipv6;
   U32 const maxVias = isIp6 ? route.of.maxVias6 : route.of.maxVias;
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
void checkRoute(Node const& node, StaticRoute const& route) {
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
   if (!route.leakToVrf.isDefaultVrf() && route.leakToVrf == route.of.vrfName) {
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

// Writes the members of an object, those with their default value left out.
class ObjectText {
 public:
   explicit ObjectText(std::string& out) : out_(out) { out_ += '{'; }
   ~ObjectText() { out_ += '}'; }
   ObjectText(ObjectText const&) = delete;
   ObjectText& operator=(ObjectText const&) = delete;

   std::string& member(std::string_view name) {
      out_.append(first_ ? "\"" : ",\"").append(name).append("\":");
      first_ = false;
      return out_;
   }
   void text(std::string_view name, std::string_view value, bool isSet) {
      if (isSet) {
         member(name).append(jsonQuoted(value));
      }
   }
   void number(std::string_view name, U32 value, U32 unless) {
      if (value != unless) {
         member(name).append(std::to_string(value));
      }
   }
   void flag(std::string_view name, bool value) {
      if (value) {
         member(name).append("true");
      }
   }

 private:
   std::string& out_;
   bool first_ = true;
};

template <class Items, class Append>
void appendList(std::string& out, Items const& items, Append&& append) {
   char separator = '[';
   for (auto const& item : items) {
      out += std::exchange(separator, ',');
      append(item);
   }
   out += separator == '[' ? "[]" : "]";
}

void appendVia(std::string& out, Routing::Route const& route, Routing::Via const& via, Routing::RouteMetric metric) {
   auto const* const name = route.viaNextHopName().find(via);
   ObjectText object(out);
   object.text("nexthop", via.hop.stringValue(), !via.hop.isEmpty());
   object.text("interface", via.intfId.name(), via.intfId.isValid());
   object.number("label", via.mplsLabel.value(), Lumen::MplsLabel::noLabel);
   object.text("egressVrf", via.egressVrf.bytes(), !via.egressVrf.isDefaultVrf());
   object.text("vtep", via.vtepAddr.stringValue(), !via.vtepAddr.isEmpty());
   object.number("vni", via.vni.value(), 0);
   object.text("routerMac", via.routerMac.stringValue(), !via.routerMac.isZero());
   object.text("localInterface", via.localIntf.name(), via.localIntf.isValid());
   object.flag("sourceVtepValidation", via.vtepSipValidation);
   object.flag("bfd", route.bfdTracked().contains(via));
   object.number("metric", metric, 0);
   object.text("name", name != nullptr ? name->bytes() : "", name != nullptr && !name->empty());
}

void appendRoute(std::string& out, Routing::Route const& route) {
   constexpr U32 defaultPreference = 1;
   auto const type = std::ranges::find(typeNames, route.routeType(), &decltype(typeNames)::value_type::second);
   ObjectText object(out);
   object.text("prefix", route.key().prefix.stringValue(), true);
   object.number("preference", route.key().preference, defaultPreference);
   object.text("type", type->first, route.routeType() != RouteType::forward);
   object.number("tag", route.tag(), 0);
   object.flag("nonPersistent", route.nonPersistent());
   object.flag("ribBypass", route.ribBypass());
   object.text("leakToVrf", route.leakToVrf().bytes(), !route.leakToVrf().isDefaultVrf());
   object.text("name", route.dropNextHopName().bytes(), !route.dropNextHopName().empty());
   object.text("nexthopGroup", route.nexthopGroupName().bytes(), !route.nexthopGroupName().empty());
   object.number("metric", route.nexthopGroupMetric(), 0);
   if (!route.via().empty()) {
      std::vector<std::pair<Routing::Via, Routing::RouteMetric>> vias;
      vias.reserve(route.via().size());
      for (auto const& [via, metric] : route.via()) {
         vias.emplace_back(via, metric);
      }
      std::ranges::sort(vias);
      appendList(object.member("vias"), vias, [&](auto const& via) { appendVia(out, route, via.first, via.second); });
   }
}

}  // namespace

void readStaticRoutes(Node const& list, StaticRoutesOf const& of, StaticRoutes& routes) {
   if (!isConfigWord(of.vrfName)) {
      list.fail("no command can name a VRF that has blanks in its name");
   }
   list.forEachElement([&](Node const& node) {
      StaticRoute route{.of = of};
      readObject(node, routeMembers, route);
      checkRoute(node, route);
      if (isShown(route)) {
         checkConfigured(node, route);
      }
      Routing::RouteList& ofFamily = routes.of(route.key.prefix.family());
      if (ofFamily.route(route.key) != nullptr) {
         node.fail("given twice");
      }
      addRoute(ofFamily, route, node);
   });
}

void appendStaticRoutes(std::string& out, StaticRoutes const& routes) {
   std::vector<Routing::Route const*> sorted;
   sorted.reserve(routes.ip->route().size() + routes.ip6->route().size());
   for (auto const& list : {routes.ip, routes.ip6}) {
      for (auto const& [key, route] : list->route()) {
         sorted.push_back(route.get());
      }
   }
   std::ranges::sort(sorted, {},
                     [](Routing::Route const* route) { return std::pair(route->key().prefix.family(), route->key()); });
   appendList(out, sorted, [&](Routing::Route const* route) { appendRoute(out, *route); });
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
