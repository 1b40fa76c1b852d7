#pragma once

#include "state/text/Kinds.h"

#include <span>

// The members of a snapshot's root, by what they are about; each list is in the source of that name. They are read in
// the order of Snapshot.cpp, each after what it refers to, whatever the order of the document.
namespace state {

std::span<Member<State> const> interfaceSections();
std::span<Member<State> const> nexthopGroupSections();
std::span<Member<State> const> fecSections();
std::span<Member<State> const> tunnelSections();
std::span<Member<State> const> vrfSections();

// Before everything that refers to them: the names of the VRFs, and those of the FECs.
void nameVrfs(Node const& node, Reading& reading);
void nameFecs(Node const& node, Reading& reading);

// Lists of vias, which routes may have of their own.
struct Vias {
   using Value = ViaList;
   static Value read(Node const& node, Reading& reading);
   static void write(JsonWriter& out, Writing const& writing, Value const& list);
   static std::string schema(Schema& schema);
};
FecId inlineFec(Reading& reading, U8 adjType, ViaList list);

// By the name of a group, the indexes of its entries.
struct ProgrammedGroups {
   using Value = std::vector<ProgrammedGroup>;
   static Value read(Node const& node, Reading& reading);
   static void write(JsonWriter& out, Writing const& writing, Value const& groups);
   static std::string schema(Schema& schema);
};

// The static routes of a VRF.
struct StaticRouteList {
   using Value = StaticRoutes;
   static bool isEmpty(Value const& routes) { return routes.isEmpty(); }
   static Value read(Node const& node, Reading& reading);
   static void write(JsonWriter& out, Writing const& writing, Value const& routes);
   static std::string schema(Schema& schema);
};

}  // namespace state
