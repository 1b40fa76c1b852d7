#include "state/text/Documents.h"
#include "state/text/Sections.h"

#include <array>
#include <functional>

namespace state {
namespace {

constexpr auto plainMembers = std::to_array<Member<State>>({
    {"$schema", [](Node const& node, Reading&, State&) { node.text(); }, [](State const&) { return false; },
     [](JsonWriter&, Writing const&, State const&) {}, [](Schema&) { return std::string("\"type\":\"string\""); }},
    member<Flag, &State::genericFib>("genericFib")
        .about("All FECs, of whatever type, are in one table for both families."),
    member<Number<U32>, &State::maxVias>("maxViasIpv4"),
    member<Number<U32>, &State::maxVias6>("maxViasIpv6"),
    member<Number<U32>, &State::maxNexthopGroupSize>("maxNexthopGroupSize")
        .about("Over how many entries of a group the hardware spreads traffic; 0 for no limit."),
});

// Each after what it refers to.
std::vector<Member<State>> allMembers() {
   std::vector<Member<State>> all(plainMembers.begin(), plainMembers.end());
   for (auto const& sections :
        {interfaceSections(), nexthopGroupSections(), fecSections(), tunnelSections(), vrfSections()}) {
      all.insert(all.end(), sections.begin(), sections.end());
   }
   for (Member<State>& member : all) {
      if (member.name != "vrfs") {
         member = member.notIn(configPart);
      }
   }
   return all;
}

// Of a root, by the places of the members in the table; those that are not there have no node.
std::vector<std::optional<Node>> nodesOf(Node const& root, std::span<Member<State> const> members, U8 part) {
   std::vector<std::optional<Node>> nodes(members.size());
   for (auto const field : root.object()) {
      Node const node(root, field.key, field.value);
      auto& place = nodes[static_cast<std::size_t>(&detail::memberNamed(members, node, part) - members.data())];
      if (place) {
         node.fail("given twice");
      }
      place = node;
   }
   return nodes;
}

void readInto(State& state, JsonDocument const& document, U8 part) {
   Node const root = document.root();
   Reading reading{.state = state, .part = part, .fecsElsewhere = part == entitiesPart};
   auto const members = allMembers();
   auto const nodes = nodesOf(root, members, part);
   auto const prepare = [&](std::string_view name, void (*act)(Node const&, Reading&)) {
      auto const at = std::ranges::find(members, name, &Member<State>::name) - members.begin();
      if (auto const& node = nodes[static_cast<std::size_t>(at)]) {
         act(*node, reading);
      }
   };
   if (part != configPart) {
      prepare("vrfs", nameVrfs);
      prepare("fecs", nameFecs);
   }
   for (std::size_t i = 0; i < members.size(); ++i) {
      if (nodes[i]) {
         members[i].read(*nodes[i], reading, state);
      }
   }
   if (state.vrfs.empty() || state.vrfs.front().id != Vrf::VrfIdMap::defaultVrf) {
      state.vrfs.insert(state.vrfs.begin(), VrfState{});
   }
}

std::string textOf(State const& state, U8 part) {
   std::string text;
   JsonWriter out(text);
   out.open('{');
   writeMembers<State>(out, Writing(state, part), allMembers(), part, state);
   out.close('}');
   return text += '\n';
}

}  // namespace

State readState(JsonDocument const& document) {
   State state;
   readInto(state, document, snapshotPart);
   return state;
}

State readSnapshot(std::string const& file) {
   return readState(JsonDocument::load(file));
}

State parseSnapshot(std::string name, std::string text) {
   return readState(JsonDocument::parse(std::move(name), std::move(text)));
}

std::string snapshotText(State const& state) {
   return textOf(state, snapshotPart);
}

State readEntities(JsonDocument const& document) {
   State state;
   readInto(state, document, entitiesPart);
   return state;
}

std::string entitiesText(State const& state) {
   return textOf(state, entitiesPart);
}

void readConfig(JsonDocument const& document, State& state) {
   for (VrfState& vrf : state.vrfs) {
      vrf.staticRoutes = {};
   }
   readInto(state, document, configPart);
}

std::string configText(State const& state) {
   return textOf(state, configPart);
}

std::string snapshotSchema() {
   Schema schema;
   std::string const root = schemaOf<State>(allMembers(), schema);
   return schema.document("\"title\":\"Snapshot of the forwarding state of a box\"," + root);
}

}  // namespace state
