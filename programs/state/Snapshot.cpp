#include "programs/state/Snapshot.h"

#include "programs/state/SnapshotContext.h"

#include <algorithm>
#include <optional>

namespace state {
namespace {

// The sections that refer to others, put by until those are read.
struct Sections {
   Context context{};
   std::optional<Node> vrfs{};
   std::optional<Node> interfaces{};
   std::optional<Node> nexthopGroups{};
   std::optional<Node> nexthopGroupCounters{};
   std::optional<Node> fecs{};
   std::optional<Node> policyFecs{};
   std::optional<Node> evpnFecs{};
   std::optional<Node> tunnels{};
   std::optional<Node> labelStacks{};
   std::optional<Node> tunnelTables{};
   std::optional<Node> tunnelNames{};
   std::optional<Node> policies{};
   std::optional<Node> fecOverrides{};
   std::optional<Node> flexAlgorithms{};
};

constexpr auto snapshotMembers = std::to_array<Member<Sections>>({
    {"$schema", [](Node const& n, Sections&) { n.text(); }},
    {"vrfs", [](Node const& n, Sections& s) { s.vrfs = n; }},
    {"interfaces", [](Node const& n, Sections& s) { s.interfaces = n; }},
    {"nexthopGroups", [](Node const& n, Sections& s) { s.nexthopGroups = n; }},
    {"nexthopGroupCounters", [](Node const& n, Sections& s) { s.nexthopGroupCounters = n; }},
    {"fecs", [](Node const& n, Sections& s) { s.fecs = n; }},
    {"policyFecs", [](Node const& n, Sections& s) { s.policyFecs = n; }},
    {"evpnFecs", [](Node const& n, Sections& s) { s.evpnFecs = n; }},
    {"tunnels", [](Node const& n, Sections& s) { s.tunnels = n; }},
    {"labelStacks", [](Node const& n, Sections& s) { s.labelStacks = n; }},
    {"tunnelTables", [](Node const& n, Sections& s) { s.tunnelTables = n; }},
    {"tunnelNames", [](Node const& n, Sections& s) { s.tunnelNames = n; }},
    {"policies", [](Node const& n, Sections& s) { s.policies = n; }},
    {"fecOverrides", [](Node const& n, Sections& s) { s.fecOverrides = n; }},
    {"flexAlgorithms", [](Node const& n, Sections& s) { s.flexAlgorithms = n; }},
    {"genericFib", [](Node const& n, Sections& s) { s.context.state.genericFib = n.boolean(); }},
    {"maxViasIpv4", [](Node const& n, Sections& s) { s.context.state.maxVias = n.number<U32>(); }},
    {"maxViasIpv6", [](Node const& n, Sections& s) { s.context.state.maxVias6 = n.number<U32>(); }},
    {"maxNexthopGroupSize", [](Node const& n, Sections& s) { s.context.state.maxNexthopGroupSize = n.number<U32>(); }},
});

// What is in the shared tables, or in the configuration file, once a snapshot is loaded.
constexpr auto tableSections =
    std::to_array<std::string_view>({"fecs", "policyFecs", "nexthopGroupCounters", "$schema"});
constexpr auto tableSectionsOfVrf =
    std::to_array<std::string_view>({"ipv4Routes", "ipv6Routes", "notInHardware", "notInKernel", "staticRoutes"});

State readSections(Node const& root, bool fecsElsewhere) {
   struct Step {
      std::optional<Node> Sections::*section;
      void (*read)(Node const&, Context&);
   };
   // Each after what it refers to.
   constexpr auto steps = std::to_array<Step>({{&Sections::vrfs, nameVrfs},
                                               {&Sections::interfaces, readInterfaces},
                                               {&Sections::nexthopGroups, readNexthopGroups},
                                               {&Sections::nexthopGroupCounters, readNexthopGroupCounters},
                                               {&Sections::fecs, nameFecs},
                                               {&Sections::evpnFecs, readEvpnFecs},
                                               {&Sections::fecs, readFecs},
                                               {&Sections::policyFecs, readPolicyFecs},
                                               {&Sections::tunnels, readTunnels},
                                               {&Sections::labelStacks, readLabelStacks},
                                               {&Sections::tunnelTables, readTunnelTables},
                                               {&Sections::tunnelNames, readTunnelNames},
                                               {&Sections::policies, readPolicies},
                                               {&Sections::fecOverrides, readFecOverrides},
                                               {&Sections::flexAlgorithms, readFlexAlgorithms},
                                               {&Sections::vrfs, readVrfs}});
   Sections sections;
   sections.context.fecsElsewhere = fecsElsewhere;
   readObject(root, snapshotMembers, sections);
   for (Step const& step : steps) {
      if (auto const& section = sections.*step.section) {
         step.read(*section, sections.context);
      }
   }
   State& state = sections.context.state;
   if (state.vrfs.empty() || state.vrfs.front().id != Vrf::VrfIdMap::defaultVrf) {
      state.vrfs.insert(state.vrfs.begin(), VrfState{});
   }
   return std::move(state);
}

// The object without the members of these names; `value(member)` is the text of each that stays.
template <class Value>
std::string objectWithout(simdjson::dom::object object, std::span<std::string_view const> names, Value&& value) {
   std::string out = "{";
   for (auto const member : object) {
      if (std::ranges::find(names, member.key) == names.end()) {
         out.append(out.size() > 1 ? "," : "").append(jsonQuoted(member.key)).append(":").append(value(member));
      }
   }
   return out + "}";
}

std::string entitiesOf(simdjson::dom::object root) {
   auto const vrf = [](auto const& member) {
      return objectWithout(member.value.get_object().value_unsafe(), tableSectionsOfVrf,
                           [](auto const& inner) { return simdjson::minify(inner.value); });
   };
   auto const section = [&](auto const& member) {
      return member.key == "vrfs" ? objectWithout(member.value.get_object().value_unsafe(), {}, vrf)
                                  : simdjson::minify(member.value);
   };
   return objectWithout(root, tableSections, section) + "\n";
}

}  // namespace

Snapshot readSnapshot(JsonDocument const& document) {
   Node const root = document.root();
   State state = readSections(root, false);
   return {std::move(state), entitiesOf(root.object())};
}

State readEntities(JsonDocument const& document) {
   return readSections(document.root(), true);
}

}  // namespace state
