#pragma once

#include "Hive/EntityManager.h"
#include "Zam/HashMap.h"
#include "state/Snapshot.h"
#include "state/text/Json.h"

#include <array>
#include <string_view>
#include <vector>

// What the readers of a document share, and its writers: the state, and what its own names refer to.
namespace state {

using Vault::Fib::FecId;

// The vias of a FEC as a snapshot lists them: primary ones, then backups.
struct ViaList {
   U16 primaryVias = 0;
   std::vector<Vault::Fib::Via> vias{};

   bool operator==(ViaList const&) const = default;
};

struct ViaListHash {
   std::size_t operator()(ViaList const& list) const noexcept;
};

struct Reading {
   State& state;
   U8 part;  // the document that is read
   Zam::HashMap<std::string_view, VrfId> vrfIds{};
   Zam::HashMap<std::string_view, Lumen::IntfId> interfaces{};
   Zam::HashMap<std::string_view, U32> nexthopGroups{};
   Zam::HashMap<FecId, bool> fecs{};
   Zam::HashMap<FecId, bool> policyFecs{};
   std::array<Zam::HashMap<ViaList, FecId, ViaListHash>, 2> inlineFecs{};  // by adjacency type, IPv4 and IPv6
   U64 lastFecId = 0;             // the highest id of the FECs that are named, below their adjacency types
   bool fecsElsewhere = false;    // FECs are taken as they are named, for they are in the shared tables
   L3::VrfName const* vrfName{};  // of the VRF that is being read
   bool isConfigured = false;     // of the static routes that are being read: or else added while the box runs

   // Each fails at the node when nothing of that name is in the snapshot.
   VrfId vrf(Node const& node) const;
   Lumen::IntfId interface(Node const& node) const;
   U32 nexthopGroup(Node const& node) const { return nexthopGroup(node, node.text()); }
   U32 nexthopGroup(Node const& node, std::string_view name) const;
   FecId fec(Node const& node) const;
   FecId policyFec(Node const& node) const;
   // One of either kind: a policy's FEC needs no vias of its own to be a route's.
   FecId routeFec(Node const& node) const;
};

struct Writing {
   Writing(State const& written, U8 document);

   State const& state;
   U8 part;
   Zam::HashMap<VrfId, std::string_view> vrfNames{};
   Zam::HashMap<U32, std::string_view> nexthopGroupNames{};

   std::string_view vrf(VrfId id) const;
   std::string_view nexthopGroup(U32 id) const;
};

// Throws the Hive::StateError for what no snapshot can say.
[[noreturn]] void cannotSay(std::string const& what);

// "ipv4:17": an adjacency type, by name or number, and an id within it.
FecId fecIdOf(Node const& node, std::string_view text);
std::string fecText(FecId fecId);

// Where a via leaves through, which it says but once.
void exitIs(Node const& node, Lumen::IntfId& exit, Lumen::IntfId const& intfId);

}  // namespace state
