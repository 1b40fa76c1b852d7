#include "state/text/Sections.h"
#include "state/text/TunnelTypes.h"

#include <array>

namespace state {
namespace {

using Tunnel::TunnelType;
using Tunnel::TunnelTable::EvpnVxlanTunnelEntry;
using Tunnel::TunnelTable::TunnelEntry;

using FlexAlgorithmId = Number<U8, FlexAlgorithm::minId>;
inline constexpr char noLabelStack[] = "0 is no label stack";

struct TunnelViaRecord {
   using Value = Tunnel::TunnelFib::Via;
   static constexpr std::string_view name = "tunnelVia";
   static constexpr std::string_view rules =
       R"("description":"Leaves through at most one of interface, fec, nexthopGroup and tunnel.")";
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<GenAddr, &Value::hop>("nexthop"), interfaceExit<&Value::intfId>, fecExit<&Value::intfId>,
        groupExit<&Value::intfId>, tunnelExit<&Value::intfId>,
        member<Number<U64>, &Value::encapId>("labelStack").about("The id of one of the labelStacks, 0 for none."),
        member<Number<U32, 1, std::numeric_limits<U16>::max()>, &Value::weight>("weight")});
};

using TunnelWays = OfTunnel<Tunnel::TunnelFib::Entry>;
struct TunnelWaysRecord {
   using Value = TunnelWays;
   using Entry = Tunnel::TunnelFib::Entry;
   using WayList = List<Object<TunnelViaRecord>>;
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<OwnTunnel, &Value::tunnelId>("tunnel").required(),
        member<IpEncap, &Value::value, &Entry::ipEncap>("encap"), member<WayList, &Value::value, &Entry::vias>("vias"),
        member<WayList, &Value::value, &Entry::backupVias>("backupVias")});
};

struct LabelStackRecord {
   using Value = LabelStack;
   static constexpr auto members =
       std::to_array<Member<Value>>({member<Number<U64, 1, ~U64{0}, noLabelStack>, &Value::id>("id").required(),
                                     member<Labels, &Value::labels>("labels").required()});
};

using TunnelName = OfTunnel<std::string>;
struct TunnelNameRecord {
   using Value = TunnelName;
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<OwnTunnel, &Value::tunnelId>("tunnel").required(), member<Text, &Value::value>("name").required()});
};

struct PolicyRecord {
   using Value = Policy;
   using Key = SrTePolicy::PolicyKey;
   static constexpr auto members =
       std::to_array<Member<Value>>({member<GenAddr, &Value::key, &Key::endpoint>("endpoint").required(),
                                     member<Number<U32>, &Value::key, &Key::color>("color").required(),
                                     member<OwnTunnel, &Value::tunnelId>("tunnel").required()});
};

template <class Kind>
struct NotEmpty : Kind {
   using typename Kind::Value;
   static Value read(Node const& node, Reading& reading) {
      if (node.list().size() == 0) {
         node.fail("empty");
      }
      return Kind::read(node, reading);
   }
   static std::string schema(Schema& schema) { return Kind::schema(schema) + ",\"minItems\":1"; }
};

struct CodePoints : UniqueList<Number<U8, 0, 63>, By<>> {
   static std::string schema(Schema& schema) { return UniqueList::schema(schema) + ",\"uniqueItems\":true"; }
};

struct ClassRecord {
   using Value = SrTePolicy::CbfClass;
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<NotEmpty<CodePoints>, &Value::dscp>("dscp").required().about(
            "Code points, each in one class of the FEC only."),
        member<FecRef<namedPolicyFec, U64>, &Value::fecId>("fec").required().about("One of the policyFecs.")});
};

// No code point is in two of a FEC's classes.
struct Classes : NotEmpty<List<Object<ClassRecord>>> {
   static Value read(Node const& node, Reading& reading) {
      Value const classes = NotEmpty::read(node, reading);
      U64 taken = 0;
      for (std::size_t i = 0; i < classes.size(); ++i) {
         for (std::size_t j = 0; j < classes[i].dscp.size(); ++j) {
            U64 const bit = U64{1} << classes[i].dscp[j];
            if ((taken & bit) != 0) {
               failAt(node, i, j);
            }
            taken |= bit;
         }
      }
      return classes;
   }

 private:
   [[noreturn]] static void failAt(Node const& list, std::size_t item, std::size_t codePoint) {
      Node const element(list, item, list.list().at(item).value_unsafe());
      Node const dscp(element, "dscp", element.object().at_key("dscp").value_unsafe());
      Node(dscp, codePoint, dscp.list().at(codePoint).value_unsafe()).fail("given twice");
   }
};

struct FecOverrideRecord {
   using Value = FecOverride;
   static constexpr auto members =
       std::to_array<Member<Value>>({member<FecRef<namedRouteFec>, &Value::fecId>("fec").required(),
                                     member<Classes, &Value::classes>("classes").required()});
};

// What the entries of a tunnel table hold: an endpoint, or a whole VXLAN next hop. Within a table an index alone names
// the tunnel.
template <class Entry>
constexpr auto indexMember = member<TunnelIndex, &OfTunnel<Entry>::tunnelId>("index").required();
constexpr auto endpointMember =
    member<GenPrefix, &OfTunnel<TunnelEntry>::value, &TunnelEntry::endpoint>("endpoint").required();

struct EndpointRecord {
   using Value = OfTunnel<TunnelEntry>;
   static constexpr auto members = std::to_array<Member<Value>>({indexMember<TunnelEntry>, endpointMember});
};
struct FlexAlgoRecord {
   using Value = OfTunnel<TunnelEntry>;
   static constexpr auto members =
       std::to_array<Member<Value>>({indexMember<TunnelEntry>, endpointMember,
                                     member<FlexAlgorithmId, &Value::value, &TunnelEntry::algorithm>("algorithm")});
};
struct EvpnTunnelRecord {
   using Value = OfTunnel<EvpnVxlanTunnelEntry>;
   static constexpr auto members = std::to_array<Member<Value>>(
       {indexMember<EvpnVxlanTunnelEntry>, member<EvpnVia, &Value::value>("via").required()});
};

template <class Record>
using Table = UniqueList<Object<Record>, By<&Record::Value::tunnelId>>;

// Calls act(table kind, the state's list of its entries).
template <class Act>
auto ofTable(TunnelType type, Act&& act) {
   if (type == TunnelType::evpnVxlan) {
      return act(Table<EvpnTunnelRecord>(), &State::evpnTunnels);
   }
   return type == TunnelType::isisFlexAlgo ? act(Table<FlexAlgoRecord>(), &State::tunnelEntries)
                                           : act(Table<EndpointRecord>(), &State::tunnelEntries);
}

void readTable(Node const& node, Reading& reading, State& state) {
   auto const named = std::ranges::find(tunnelTypeNames, node.key(), &Name<TunnelType>::first);
   if (named == tunnelTypeNames.end() || named->second == TunnelType::srTePolicy) {
      node.fail("no such tunnel table");
   }
   ofTable(named->second, [&]<class Kind>(Kind const&, auto entries) {
      for (auto& entry : Kind::read(node, reading)) {
         entry.tunnelId = Tunnel::tunnelIdOf(named->second, entry.tunnelId);
         (state.*entries).push_back(std::move(entry));
      }
   });
}

// The types in the order in which they come first.
template <class Entries>
void addTypes(std::vector<TunnelType>& types, Entries const& entries) {
   for (auto const& entry : entries) {
      TunnelType const type = Tunnel::tunnelType(entry.tunnelId);
      if (std::ranges::find(types, type) == types.end()) {
         types.push_back(type);
      }
   }
}

void writeTables(JsonWriter& out, Writing const& writing, State const& state) {
   std::vector<TunnelType> types;
   addTypes(types, state.tunnelEntries);
   addTypes(types, state.evpnTunnels);
   out.open('{');
   for (TunnelType const type : types) {
      auto const named = std::ranges::find(tunnelTypeNames, type, &Name<TunnelType>::second);
      if (named == tunnelTypeNames.end()) {
         cannotSay("the tunnel type " + std::to_string(static_cast<U32>(type)));
      }
      out.key(named->first);
      ofTable(type, [&]<class Kind>(Kind const&, auto entries) {
         typename Kind::Value ofType;
         for (auto entry : state.*entries) {
            if (Tunnel::tunnelType(entry.tunnelId) == type) {
               entry.tunnelId = Tunnel::tunnelIndex(entry.tunnelId);
               ofType.push_back(entry);
            }
         }
         Kind::write(out, writing, ofType);
      });
   }
   out.close('}');
}

std::string tablesSchema(Schema& schema) {
   Schema::Members tables;
   for (auto const& [name, type] : tunnelTypeNames) {
      if (type != TunnelType::srTePolicy) {
         tables.add(jsonQuoted(name) + ":{" +
                    ofTable(type, [&]<class Kind>(Kind const&, auto) { return Kind::schema(schema); }) + "}");
      }
   }
   return "\"type\":\"object\",\"additionalProperties\":false,\"properties\":{" + tables.text() + "}";
}

constexpr Member<State> tunnelTables{
    "tunnelTables",
    [](Node const& node, Reading& reading, State& state) {
       node.forEachMember([&](Node const& table) { readTable(table, reading, state); });
    },
    [](State const& state) { return !state.tunnelEntries.empty() || !state.evpnTunnels.empty(); }, writeTables,
    tablesSchema};

struct NamedAlgorithm {
   using Value = FlexAlgorithm;
   static constexpr std::string_view keySchema{};

   static Value read(Node const& node, Reading& reading) {
      return {FlexAlgorithmId::read(node, reading), std::string(node.key())};
   }
   static std::string key(Writing const&, Value const& algorithm) { return algorithm.name; }
   static void write(JsonWriter& out, Writing const& writing, Value const& algorithm) {
      FlexAlgorithmId::write(out, writing, algorithm.id);
   }
   static std::string schema(Schema& schema) { return FlexAlgorithmId::schema(schema); }
};

struct Algorithms : Named<NamedAlgorithm> {
   static Value read(Node const& node, Reading& reading) {
      Zam::HashMap<U8, bool> seen;
      Value algorithms;
      node.forEachMember([&](Node const& element) {
         algorithms.push_back(NamedAlgorithm::read(element, reading));
         U8 const id = algorithms.back().id;
         if (seen.contains(id)) {
            element.fail("another flexible algorithm has this number");
         }
         seen.insertOrReplace(id, true);
      });
      return algorithms;
   }
};

}  // namespace

std::span<Member<State> const> tunnelSections() {
   static constexpr auto sections = std::to_array<Member<State>>({
       member<UniqueList<Object<TunnelWaysRecord>, By<&TunnelWays::tunnelId>>, &State::tunnels>("tunnels").about(
           "The tunnel FIB: the ways that each tunnel takes."),
       member<UniqueList<Object<LabelStackRecord>, By<&LabelStack::id>>, &State::labelStacks>("labelStacks")
           .about("What the vias of tunnels do to a packet's labels, outermost label first."),
       tunnelTables.about("What each protocol knows of its tunnels, by index."),
       member<UniqueList<Object<TunnelNameRecord>, By<&TunnelName::tunnelId>>, &State::tunnelNames>("tunnelNames"),
       member<UniqueList<Object<PolicyRecord>, By<&Policy::key>>, &State::policies>("policies")
           .about("The tunnel of each segment routing policy."),
       member<UniqueList<Object<FecOverrideRecord>, By<&FecOverride::fecId>>, &State::fecOverrides>("fecOverrides")
           .about("The policy FECs that class-based forwarding has carry some classes of a FEC's traffic."),
       member<Algorithms, &State::flexAlgorithms>("flexAlgorithms")
           .about("The number of each flexible algorithm, by name."),
   });
   return sections;
}

}  // namespace state
