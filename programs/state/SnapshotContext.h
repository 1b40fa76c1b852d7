#pragma once

#include "programs/state/Json.h"
#include "programs/state/State.h"

#include "Zam/HashMap.h"

#include <string_view>
#include <type_traits>
#include <vector>

// What the readers of a snapshot's sections share: the state that they fill, and what the snapshot's own names refer
// to.
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

struct Context {
   State state{};
   Zam::HashMap<std::string_view, VrfId> vrfIds{};
   Zam::HashMap<std::string_view, Lumen::IntfId> interfaces{};
   Zam::HashMap<std::string_view, U32> nexthopGroups{};
   Zam::HashMap<FecId, bool> fecs{};
   Zam::HashMap<FecId, bool> policyFecs{};
   std::array<Zam::HashMap<ViaList, FecId, ViaListHash>, 2> inlineFecs{};  // by adjacency type, IPv4 and IPv6
   U64 lastFecId = 0;  // the highest id of the FECs that are named, below their adjacency types
   bool fecsElsewhere = false;

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

// "ipv4:17": an adjacency type, by name or number, and an id within it.
FecId fecIdOf(Node const& node, std::string_view text);

// A prefix without host bits.
template <class Prefix>
Prefix prefixOf(Node const& node);
extern template Lumen::Prefix prefixOf(Node const& node);
extern template Lumen::Ip6Prefix prefixOf(Node const& node);
Lumen::IpGenPrefix genPrefixOf(Node const& node);
Lumen::IpGenAddr genAddrOf(Node const& node);

// {"type": "isisSr", "index": 5}: the type of a tunnel, by name or number, and its index within it.
Tunnel::TunnelId tunnelIdOf(Node const& node);
// {"type": "gre", "destination": "10.0.0.1"}: an outer header.
Tunnel::IpTunnelEncap ipEncapOf(Node const& node);
// Where a via leaves through, which it says but once.
void exitIs(Node const& node, Lumen::IntfId& exit, Lumen::IntfId const& intfId);

// Reads a list of what has a key of its own; one key twice is an error.
template <class Item, class Read, class KeyOf>
void readUnique(Node const& list, std::vector<Item>& items, Read&& read, KeyOf&& keyOf) {
   Zam::HashMap<std::decay_t<decltype(keyOf(items.front()))>, bool> seen;
   list.forEachElement([&](Node const& node) {
      Item item = read(node);
      if (seen.contains(keyOf(item))) {
         node.fail("given twice");
      }
      seen.insertOrReplace(keyOf(item), true);
      items.push_back(std::move(item));
   });
}

template <class T>
T numberFrom(Node const& node, T min) {
   auto const value = node.number<T>();
   if (value < min) {
      node.fail("not from " + std::to_string(min) + " to " + std::to_string(std::numeric_limits<T>::max()));
   }
   return value;
}

// One of a list of names.
template <class Enum, std::size_t Size>
Enum oneOf(Node const& node, std::array<std::pair<std::string_view, Enum>, Size> const& names) {
   std::string expected = "not one of";
   for (auto const& [name, value] : names) {
      if (name == node.text()) {
         return value;
      }
      expected.append(" ").append(name);
   }
   node.fail(expected);
}

// One of a list of names, or the number behind it.
template <class Enum, std::size_t Size>
Enum namedOf(Node const& node, std::array<std::pair<std::string_view, Enum>, Size> const& names) {
   return node.isText() ? oneOf(node, names) : static_cast<Enum>(node.number<std::underlying_type_t<Enum>>());
}

// The sections.
ViaList readVias(Node const& node, Context const& context);
FecId inlineFec(Context& context, U8 adjType, ViaList list);
void nameFecs(Node const& node, Context& context);
void readFecs(Node const& node, Context& context);
void readPolicyFecs(Node const& node, Context& context);
void readInterfaces(Node const& node, Context& context);
void nameVrfs(Node const& node, Context& context);
void readVrfs(Node const& node, Context& context);
void readNexthopGroups(Node const& node, Context& context);
void readNexthopGroupCounters(Node const& node, Context& context);
std::vector<ProgrammedGroup> readProgrammedGroups(Node const& node, Context const& context);
void readEvpnFecs(Node const& node, Context& context);
Tunnel::TunnelTable::EvpnVxlanTunnelEntry readEvpnVia(Node const& node, Context const& context);
void readTunnels(Node const& node, Context& context);
void readLabelStacks(Node const& node, Context& context);
void readTunnelTables(Node const& node, Context& context);
void readTunnelNames(Node const& node, Context& context);
void readPolicies(Node const& node, Context& context);
void readFecOverrides(Node const& node, Context& context);
void readFlexAlgorithms(Node const& node, Context& context);

}  // namespace state
