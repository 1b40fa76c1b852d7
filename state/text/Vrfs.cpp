#include "state/Family.h"
#include "state/RouteTypeNames.h"
#include "state/text/Sections.h"

#include "Routing/AttachedRouteStatus.h"

#include <array>

namespace state {
namespace {

template <class RouteType>
struct RouteTypeKind {
   using Value = RouteType;

   static Value read(Node const& node, Reading&) {
      if (!node.isText()) {
         return static_cast<RouteType>(node.number<U8>());
      }
      auto const type = routeTypeOf<RouteType>(node.text());
      if (!type) {
         node.fail("no such route type");
      }
      return *type;
   }
   static void write(JsonWriter& out, Writing const&, Value type) {
      std::string_view const name = routeTypeName(type);
      name.empty() ? out.number(static_cast<U64>(type)) : out.text(name);
   }
   static std::string schema(Schema& schema) {
      Schema::Members names;
      for (auto const& named : routeTypeNames<RouteType>) {
         names.add(jsonQuoted(named.name));
      }
      return "\"anyOf\":[{" + numberSchema(schema, 0, maxU8) + "},{\"enum\":[" + names.text() + "]}]";
   }
};

// A FEC of the route: one that has a name, or one of the vias that the route lists, which is written by its name then.
template <class Family>
struct ReadFec {
   using Record = typename Family::Route;
   static std::optional<FecId> get(Record const& route) {
      return route.fecId ? std::optional(route.fecId) : std::nullopt;
   }
   static void set(Record& route, FecId fecId, Node const& node) {
      if (route.fecId) {
         node.fail("both a FEC and vias of its own");
      }
      route.fecId = fecId;
   }
};
template <class Family>
struct OwnVias : ReadFec<Family> {
   static std::optional<FecId> get(typename Family::Route const&) { return std::nullopt; }
};

template <class Family>
struct InlineVias {
   using Value = FecId;
   static Value read(Node const& node, Reading& reading) {
      return inlineFec(reading, Family::adjType, Vias::read(node, reading));
   }
   static void write(JsonWriter&, Writing const&, Value) {}
   static std::string schema(Schema& schema) { return Vias::schema(schema); }
};

template <class Family>
struct RouteRecord {
   using Value = typename Family::Route;
   static constexpr std::string_view name = Family::family == Lumen::AddressFamily::ipv4 ? "ipv4Route" : "ipv6Route";
   static constexpr std::string_view rules = R"("not":{"required":["fec","vias"]})";
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<PrefixKind<typename Family::Prefix>, &Value::prefix>("prefix").required(),
        member<RouteTypeKind<typename Family::RouteType>, &Value::routeType>("type").required(),
        member<Number<U8>, &Value::preference>("preference"), member<Number<U32>, &Value::metric>("metric"),
        member<VrfRef, &Value::srcVrfId>("sourceVrf").about("The VRF that the route was leaked from."),
        member<FecRef<namedRouteFec>, ReadFec<Family>>("fec"), member<InlineVias<Family>, OwnVias<Family>>("vias")});
};

template <class Family>
struct ByPrefix {
   static auto const& key(typename Family::Route const& route) { return route.prefix; }
   static std::string repeated(typename Family::Route const& route) {
      return "another route has the prefix " + route.prefix.stringValue();
   }
};

template <class Family>
using Routes = UniqueList<Object<RouteRecord<Family>>, ByPrefix<Family>>;

inline constexpr char noError[] = "0 is no error";

struct KernelRecord {
   using Value = UnprogrammedRoute;
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<GenPrefix, &Value::prefix>("prefix").required(),
        member<Number<U32, 1, std::numeric_limits<U32>::max(), noError>, &Value::error>("error").required()});
};

struct HardwareRoute {
   using Value = UnprogrammedRoute;
   static Value read(Node const& node, Reading& reading) { return {GenPrefix::read(node, reading)}; }
   static void write(JsonWriter& out, Writing const& writing, Value const& route) {
      GenPrefix::write(out, writing, route.prefix);
   }
   static std::string schema(Schema& schema) { return GenPrefix::schema(schema); }
};

struct AttachedRecord {
   using Value = AttachedRoute;
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<GenAddr, &Value::address>("address").required(),
        member<InterfaceRef, &Value::intfId>("interface").required(), member<Flag, &Value::active>("active")});
};
struct ByHost : KeyBase {
   static auto key(AttachedRoute const& route) { return Routing::AttachedRouteKey{{}, route.intfId, route.address}; }
};

constexpr auto cachedTypeNames =
    std::to_array<Name<Routing::RouteType>>({{"forward", Routing::RouteType::forward},
                                             {"drop", Routing::RouteType::drop},
                                             {"nexthopGroup", Routing::RouteType::nexthopGroup},
                                             {"l2NexthopGroup", Routing::RouteType::l2NexthopGroup},
                                             {"routeCacheConnected", Routing::RouteType::routeCacheConnected}});

struct ConfiguredViaRecord {
   using Value = Routing::Via;
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<GenAddr, &Value::hop>("nexthop"), member<InterfaceRef, &Value::intfId>("interface")});
};

struct CachedRecord {
   using Value = CachedRoute;
   using Entry = Routing::Rib::RouteConfigEntry;
   static constexpr std::string_view name = "cachedRoute";
   static constexpr std::string_view rules =
       R"("description":"A route of the route cache, with a FEC or with vias of its own.")";
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<GenPrefix, &Value::prefix>("prefix").required(),
        member<NameOrNumber<cachedTypeNames, maxU8>, &Value::entry, &Entry::routeType>("type"),
        member<Number<U8>, &Value::entry, &Entry::preference>("preference"),
        member<Number<U32>, &Value::entry, &Entry::metric>("metric"),
        member<FecRef<namedFec, U64>, &Value::entry, &Entry::fecId>("fec"),
        member<List<Object<ConfiguredViaRecord>>, &Value::entry, &Entry::vias>("vias")});
   static void check(Node const& node, Reading const&, Value const& route) {
      if (route.entry.fecId != 0 && !route.entry.vias.empty()) {
         node.fail("both a FEC and vias of its own");
      }
   }
};
using RouteConfig = UniqueList<Object<CachedRecord>, By<&CachedRoute::prefix>>;

// Read before everything that refers to a VRF.
struct KnownId {
   using Record = VrfState;
   static std::optional<VrfId> get(Record const& vrf) {
      return vrf.id != Vrf::VrfIdMap::defaultVrf ? std::optional(vrf.id) : std::nullopt;
   }
   static void set(Record&, VrfId, Node const&) {}
};
using VrfNumber = Number<VrfId, 0, Vrf::VrfIdMap::noVrf - 1>;

struct ConfiguredRoutes : StaticRouteList {
   static Value read(Node const& node, Reading& reading) {
      reading.isConfigured = true;
      return StaticRouteList::read(node, reading);
   }
};
struct DynamicRoutes : StaticRouteList {
   static Value read(Node const& node, Reading& reading) {
      reading.isConfigured = false;
      return StaticRouteList::read(node, reading);
   }
};

struct VrfRecord {
   using Value = VrfState;
   static constexpr std::string_view name = "vrf";
   static constexpr auto members = configuredBy(
       "staticRoutes",
       std::to_array<Member<Value>>({
           member<VrfNumber, KnownId>("id").about("Every VRF but the default one must say it."),
           member<Distinguisher, &Value::routeDistinguisher>("routeDistinguisher").about("As configured."),
           member<Distinguisher, &Value::autoRouteDistinguisher>("autoRouteDistinguisher")
               .about("As assigned by the box."),
           member<Flag, &Value::routing>("ipv4Routing"),
           member<Flag, &Value::routing6>("ipv6Routing"),
           member<Routes<Ip4>, &Value::routes>("ipv4Routes").in(snapshotPart),
           member<Routes<Ip6>, &Value::routes6>("ipv6Routes").in(snapshotPart),
           member<UniqueList<HardwareRoute, By<&UnprogrammedRoute::prefix>>, &Value::hardwareUnprogrammed>(
               "notInHardware")
               .about("Prefixes of routes that the hardware does not forward by.")
               .in(snapshotPart),
           member<UniqueList<Object<KernelRecord>, By<&UnprogrammedRoute::prefix>>, &Value::kernelUnprogrammed>(
               "notInKernel")
               .about("Routes that the kernel did not take, with its error number.")
               .in(snapshotPart),
           member<ConfiguredRoutes, &Value::staticRoutes>("staticRoutes")
               .about("The static routes that are configured, whether or not they are in force.")
               .in(snapshotPart | configPart),
           member<DynamicRoutes, &Value::dynamicRoutes>("dynamicRoutes")
               .about("Static routes that were added while the box runs."),
           member<UniqueList<Object<AttachedRecord>, ByHost>, &Value::attachedRoutes>("attachedRoutes")
               .about("Hosts that were resolved on an interface."),
           member<RouteConfig, &Value::routeCache>("routeCache"),
           member<RouteConfig, &Value::secondRouteConfig>("secondRouteConfig"),
           member<ProgrammedGroups, &Value::programmedGroups>("nexthopGroupsInHardware")
               .about("The groups that the hardware forwards by, and the indexes of their entries that it has."),
       }));
};

// The default VRF is number 0, which it need not say; the others have numbers of their own.
VrfId vrfIdOf(Node const& vrf, Reading& reading) {
   Node::Element element;
   bool const isDefault = vrf.key() == L3::VrfName::defaultVrf;
   if (vrf.object().at_key("id").get(element) != simdjson::SUCCESS) {
      if (!isDefault) {
         vrf.fail("member \"id\" is missing");
      }
      return Vrf::VrfIdMap::defaultVrf;
   }
   Node const node(vrf, "id", element);
   VrfId const id = VrfNumber::read(node, reading);
   if (isDefault != (id == Vrf::VrfIdMap::defaultVrf)) {
      node.fail("0 is the id of the default VRF");
   }
   return id;
}

// The VRF's own members; in a configuration, those of one that is there.
void readVrf(Node const& node, Reading& reading, VrfState& vrf) {
   reading.vrfName = &vrf.name;
   Object<VrfRecord>::readInto(node, reading, vrf);
}

void readVrfs(Node const& node, Reading& reading, State& state) {
   node.forEachMember([&](Node const& element) {
      if (reading.part == configPart) {
         auto const there = std::ranges::find(state.vrfs, element.key(),
                                              [](VrfState const& vrf) { return std::string_view(vrf.name); });
         return there != state.vrfs.end() ? readVrf(element, reading, *there) : element.fail("no such VRF");
      }
      VrfState vrf{.id = *reading.vrfIds.find(element.key()), .name = L3::VrfName(element.key())};
      readVrf(element, reading, vrf);
      state.vrfs.push_back(std::move(vrf));
   });
   std::ranges::sort(state.vrfs, {}, &VrfState::id);
}

void writeVrfs(JsonWriter& out, Writing const& writing, State const& state) {
   out.open('{');
   for (VrfState const& vrf : state.vrfs) {
      if (writing.part != configPart || !vrf.staticRoutes.isEmpty()) {
         out.key(vrf.name);
         Object<VrfRecord>::write(out, writing, vrf);
      }
   }
   out.close('}');
}

std::string vrfsSchema(Schema& schema) {
   return "\"type\":\"object\",\"propertyNames\":{\"minLength\":1,\"maxLength\":" +
          std::to_string(L3::VrfName::maxLength()) + "},\"additionalProperties\":{" +
          Object<VrfRecord>::schema(schema) + "}";
}

}  // namespace

std::span<Member<State> const> vrfSections() {
   static constexpr auto sections = std::to_array<Member<State>>(
       {Member<State>{"vrfs", readVrfs, [](State const&) { return true; }, writeVrfs, vrfsSchema}.about(
           "By name. The default VRF is always there and has the id 0.")});
   return sections;
}

void nameVrfs(Node const& node, Reading& reading) {
   Zam::HashMap<VrfId, bool> seen;
   node.forEachMember([&](Node const& vrf) {
      if (vrf.key().empty() || vrf.key().size() > L3::VrfName::maxLength()) {
         vrf.fail("the name is not of 1 to " + std::to_string(L3::VrfName::maxLength()) + " bytes");
      }
      VrfId const id = vrfIdOf(vrf, reading);
      if (seen.contains(id)) {
         vrf.fail("another VRF has the id " + std::to_string(id));
      }
      seen.insertOrReplace(id, true);
      reading.vrfIds.insertOrReplace(vrf.key(), id);
   });
}

}  // namespace state
