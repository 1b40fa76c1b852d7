#include "programs/state/RouteTypeNames.h"
#include "programs/state/SnapshotContext.h"

#include "Routing/AttachedRouteStatus.h"

#include <algorithm>

namespace state {
namespace {

struct Ip4 {
   using Route = Vault::Fib::Route;
   static constexpr U8 adjType = 0;
   static constexpr auto routes = &VrfState::routes;
};

struct Ip6 {
   using Route = Vault::Fib6::Route;
   static constexpr U8 adjType = 1;
   static constexpr auto routes = &VrfState::routes6;
};

template <class RouteType>
RouteType readRouteType(Node const& node) {
   if (!node.isText()) {
      return static_cast<RouteType>(node.number<U8>());
   }
   auto const type = routeTypeOf<RouteType>(node.text());
   if (!type) {
      node.fail("no such route type");
   }
   return *type;
}

template <class Family>
struct RouteTarget {
   Context& context;
   typename Family::Route route{};

   void fecIdIs(Node const& node, FecId fecId) {
      if (route.fecId) {
         node.fail("both a FEC and vias of its own");
      }
      route.fecId = fecId;
   }
};

template <class Family>
constexpr auto routeMembers = [] {
   using Target = RouteTarget<Family>;
   using Route = typename Family::Route;
   return std::to_array<Member<Target>>({
       {"prefix", [](Node const& n, Target& t) { t.route.prefix = prefixOf<decltype(Route::prefix)>(n); }, true},
       {"type", [](Node const& n, Target& t) { t.route.routeType = readRouteType<decltype(Route::routeType)>(n); },
        true},
       {"preference", [](Node const& n, Target& t) { t.route.preference = n.number<U8>(); }},
       {"metric", [](Node const& n, Target& t) { t.route.metric = n.number<U32>(); }},
       {"sourceVrf", [](Node const& n, Target& t) { t.route.srcVrfId = t.context.vrf(n); }},
       {"fec", [](Node const& n, Target& t) { t.fecIdIs(n, t.context.routeFec(n)); }},
       {"vias",
        [](Node const& n, Target& t) { t.fecIdIs(n, inlineFec(t.context, Family::adjType, readVias(n, t.context))); }},
   });
}();

struct VrfTarget {
   Context& context;
   VrfState vrf{};
};

template <class Family>
void readRoutes(Node const& list, VrfTarget& target) {
   using Route = typename Family::Route;
   Zam::HashMap<decltype(Route::prefix), bool> seen;
   auto& routes = target.vrf.*Family::routes;
   list.forEachElement([&](Node const& node) {
      RouteTarget<Family> route{target.context};
      readObject(node, routeMembers<Family>, route);
      if (seen.contains(route.route.prefix)) {
         node.fail("another route has the prefix " + route.route.prefix.stringValue());
      }
      seen.insertOrReplace(route.route.prefix, true);
      routes.push_back(route.route);
   });
}

constexpr auto kernelMembers = std::to_array<Member<UnprogrammedRoute>>({
    {"prefix", [](Node const& n, UnprogrammedRoute& r) { r.prefix = genPrefixOf(n); }, true},
    {"error",
     [](Node const& n, UnprogrammedRoute& r) {
        r.error = n.number<U32>();
        if (r.error == 0) {
           n.fail("0 is no error");
        }
     },
     true},
});

void readNotInHardware(Node const& list, VrfTarget& target) {
   readUnique(
       list, target.vrf.hardwareUnprogrammed, [](Node const& node) { return UnprogrammedRoute{genPrefixOf(node)}; },
       [](UnprogrammedRoute const& route) { return route.prefix; });
}

void readNotInKernel(Node const& list, VrfTarget& target) {
   auto const read = [](Node const& node) {
      UnprogrammedRoute route;
      readObject(node, kernelMembers, route);
      return route;
   };
   readUnique(list, target.vrf.kernelUnprogrammed, read, [](UnprogrammedRoute const& route) { return route.prefix; });
}

struct AttachedTarget {
   Context const& context;
   AttachedRoute route{};
};

constexpr auto attachedMembers = std::to_array<Member<AttachedTarget>>({
    {"address", [](Node const& n, AttachedTarget& t) { t.route.address = genAddrOf(n); }, true},
    {"interface", [](Node const& n, AttachedTarget& t) { t.route.intfId = t.context.interface(n); }, true},
    {"active", [](Node const& n, AttachedTarget& t) { t.route.active = n.boolean(); }},
});

void readAttachedRoutes(Node const& list, VrfTarget& target) {
   auto const read = [&](Node const& node) {
      AttachedTarget attached{target.context};
      readObject(node, attachedMembers, attached);
      return attached.route;
   };
   readUnique(list, target.vrf.attachedRoutes, read, [](AttachedRoute const& route) {
      return Routing::AttachedRouteKey{{}, route.intfId, route.address};
   });
}

struct CachedTarget {
   Context const& context;
   CachedRoute route{};
};

constexpr auto cachedTypeNames = std::to_array<std::pair<std::string_view, Routing::RouteType>>(
    {{"forward", Routing::RouteType::forward},
     {"drop", Routing::RouteType::drop},
     {"nexthopGroup", Routing::RouteType::nexthopGroup},
     {"l2NexthopGroup", Routing::RouteType::l2NexthopGroup},
     {"routeCacheConnected", Routing::RouteType::routeCacheConnected}});

struct ConfiguredViaTarget {
   Context const& context;
   Routing::Via via{};
};

constexpr auto configuredViaMembers = std::to_array<Member<ConfiguredViaTarget>>({
    {"nexthop", [](Node const& n, ConfiguredViaTarget& t) { t.via.hop = genAddrOf(n); }},
    {"interface", [](Node const& n, ConfiguredViaTarget& t) { t.via.intfId = t.context.interface(n); }},
});

void readConfiguredVias(Node const& list, CachedTarget& target) {
   list.forEachElement([&](Node const& node) {
      ConfiguredViaTarget via{target.context};
      readObject(node, configuredViaMembers, via);
      target.route.entry.vias.push_back(via.via);
   });
}

constexpr auto cachedMembers = std::to_array<Member<CachedTarget>>({
    {"prefix", [](Node const& n, CachedTarget& t) { t.route.prefix = genPrefixOf(n); }, true},
    {"type", [](Node const& n, CachedTarget& t) { t.route.entry.routeType = namedOf(n, cachedTypeNames); }},
    {"preference", [](Node const& n, CachedTarget& t) { t.route.entry.preference = n.number<U8>(); }},
    {"metric", [](Node const& n, CachedTarget& t) { t.route.entry.metric = n.number<U32>(); }},
    {"fec", [](Node const& n, CachedTarget& t) { t.route.entry.fecId = t.context.fec(n).value(); }},
    {"vias", readConfiguredVias},
});

template <std::vector<CachedRoute> VrfState::*routes>
void readRouteConfig(Node const& list, VrfTarget& target) {
   auto const read = [&](Node const& node) {
      CachedTarget cached{target.context};
      readObject(node, cachedMembers, cached);
      if (cached.route.entry.fecId != 0 && !cached.route.entry.vias.empty()) {
         node.fail("both a FEC and vias of its own");
      }
      return cached.route;
   };
   readUnique(list, target.vrf.*routes, read, [](CachedRoute const& route) { return route.prefix; });
}

constexpr char const* rdForm = "a route distinguisher such as 65000:100";

constexpr auto vrfMembers = std::to_array<Member<VrfTarget>>({
    {"id", [](Node const&, VrfTarget&) {}},  // read before everything that refers to a VRF
    {"ipv4Routing", [](Node const& n, VrfTarget& t) { t.vrf.routing = n.boolean(); }},
    {"ipv6Routing", [](Node const& n, VrfTarget& t) { t.vrf.routing6 = n.boolean(); }},
    {"routeDistinguisher",
     [](Node const& n, VrfTarget& t) { t.vrf.routeDistinguisher = n.parsed<Lumen::RouteDistinguisher>(rdForm); }},
    {"autoRouteDistinguisher",
     [](Node const& n, VrfTarget& t) { t.vrf.autoRouteDistinguisher = n.parsed<Lumen::RouteDistinguisher>(rdForm); }},
    {"ipv4Routes", readRoutes<Ip4>},
    {"ipv6Routes", readRoutes<Ip6>},
    {"notInHardware", readNotInHardware},
    {"notInKernel", readNotInKernel},
    {"staticRoutes",
     [](Node const& n, VrfTarget& t) {
        readStaticRoutes(n, {t.vrf.name, true, t.context.state.maxVias, t.context.state.maxVias6}, t.vrf.staticRoutes);
     }},
    {"dynamicRoutes",
     [](Node const& n, VrfTarget& t) {
        readStaticRoutes(n, {t.vrf.name, false}, t.vrf.dynamicRoutes);
     }},
    {"attachedRoutes", readAttachedRoutes},
    {"routeCache", readRouteConfig<&VrfState::routeCache>},
    {"secondRouteConfig", readRouteConfig<&VrfState::secondRouteConfig>},
    {"nexthopGroupsInHardware",
     [](Node const& n, VrfTarget& t) { t.vrf.programmedGroups = readProgrammedGroups(n, t.context); }},
});

// The default VRF is number 0, which it need not say; the others have numbers of their own.
VrfId vrfIdOf(Node const& vrf) {
   Node::Element element;
   bool const isDefault = vrf.key() == L3::VrfName::defaultVrf;
   if (vrf.object().at_key("id").get(element) != simdjson::SUCCESS) {
      if (!isDefault) {
         vrf.fail("member \"id\" is missing");
      }
      return Vrf::VrfIdMap::defaultVrf;
   }
   Node const node(vrf, "id", element);
   auto const id = static_cast<VrfId>(node.number(Vrf::VrfIdMap::noVrf - 1));
   if (isDefault != (id == Vrf::VrfIdMap::defaultVrf)) {
      node.fail("0 is the id of the default VRF");
   }
   return id;
}

}  // namespace

void nameVrfs(Node const& node, Context& context) {
   Zam::HashMap<VrfId, bool> seen;
   node.forEachMember([&](Node const& vrf) {
      if (vrf.key().empty() || vrf.key().size() > L3::VrfName::maxLength()) {
         vrf.fail("the name is not of 1 to " + std::to_string(L3::VrfName::maxLength()) + " bytes");
      }
      VrfId const id = vrfIdOf(vrf);
      if (seen.contains(id)) {
         vrf.fail("another VRF has the id " + std::to_string(id));
      }
      seen.insertOrReplace(id, true);
      context.vrfIds.insertOrReplace(vrf.key(), id);
   });
}

void readVrfs(Node const& node, Context& context) {
   node.forEachMember([&](Node const& vrf) {
      VrfTarget target{context};
      target.vrf.name = L3::VrfName(vrf.key());
      target.vrf.id = *context.vrfIds.find(vrf.key());
      readObject(vrf, vrfMembers, target);
      context.state.vrfs.push_back(std::move(target.vrf));
   });
   std::ranges::sort(context.state.vrfs, {}, &VrfState::id);
}

}  // namespace state
