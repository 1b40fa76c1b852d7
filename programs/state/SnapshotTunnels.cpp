#include "programs/state/SnapshotContext.h"

#include <algorithm>
#include <functional>

namespace state {
namespace {

using Tunnel::TunnelType;
using Tunnel::TunnelTable::EvpnVxlanTunnelEntry;
using Tunnel::TunnelTable::TunnelEntry;

constexpr U64 maxTunnelType = ~U64{0} >> Tunnel::tunnelIndexBits;
constexpr U64 maxTunnelIndex = (U64{1} << Tunnel::tunnelIndexBits) - 1;

// Of the types in tunnel ids, and of the tables with the tunnels of each type; policies have no such table.
constexpr auto tunnelTypeNames =
    std::to_array<std::pair<std::string_view, TunnelType>>({{"static", TunnelType::staticTunnel},
                                                            {"ldp", TunnelType::ldp},
                                                            {"bgpLu", TunnelType::bgpLu},
                                                            {"isisSr", TunnelType::isisSr},
                                                            {"isisFlexAlgo", TunnelType::isisFlexAlgo},
                                                            {"rsvpLer", TunnelType::rsvpLer},
                                                            {"srTePolicy", TunnelType::srTePolicy},
                                                            {"evpnVxlan", TunnelType::evpnVxlan},
                                                            {"nexthopGroup", TunnelType::nexthopGroup}});

U64 tunnelTypeOf(Node const& node) {
   return node.isText() ? static_cast<U64>(namedOf(node, tunnelTypeNames)) : node.number(maxTunnelType);
}

// A tunnel that something is said of; 0 is none.
Tunnel::TunnelId ownTunnelIdOf(Node const& node) {
   Tunnel::TunnelId const tunnelId = tunnelIdOf(node);
   if (tunnelId == 0) {
      node.fail("type 0 with index 0 is no tunnel");
   }
   return tunnelId;
}

// Reads a list of objects, each with a key of its own, into a Target's item.
template <class Target, class Item, std::size_t Size, class KeyOf>
void readUniqueObjects(Node const& list, Context const& context, std::array<Member<Target>, Size> const& members,
                       std::vector<Item>& items, KeyOf keyOf) {
   auto const read = [&](Node const& node) {
      Target target{context, {}};
      readObject(node, members, target);
      return std::move(target.item);
   };
   readUnique(list, items, read, [keyOf](Item const& item) { return std::invoke(keyOf, item); });
}

template <class T>
struct Target {
   Context const& context;
   T item{};
};

using TunnelVia = Tunnel::TunnelFib::Via;

constexpr auto tunnelViaMembers = std::to_array<Member<Target<TunnelVia>>>({
    {"nexthop", [](Node const& n, Target<TunnelVia>& t) { t.item.hop = genAddrOf(n); }},
    {"interface", [](Node const& n, Target<TunnelVia>& t) { exitIs(n, t.item.intfId, t.context.interface(n)); }},
    {"fec", [](Node const& n,
               Target<TunnelVia>& t) { exitIs(n, t.item.intfId, Lumen::IntfId::fromFecId(t.context.fec(n).value())); }},
    {"nexthopGroup",
     [](Node const& n,
        Target<TunnelVia>&
            t) { exitIs(n, t.item.intfId, Lumen::IntfId::fromNexthopGroup(t.context.nexthopGroup(n))); }},
    {"tunnel", [](Node const& n,
                  Target<TunnelVia>& t) { exitIs(n, t.item.intfId, Lumen::IntfId::fromTunnelId(ownTunnelIdOf(n))); }},
    {"labelStack", [](Node const& n, Target<TunnelVia>& t) { t.item.encapId = n.number<U64>(); }},
    {"weight", [](Node const& n, Target<TunnelVia>& t) { t.item.weight = numberFrom<U16>(n, 1); }},
});

void readTunnelVias(Node const& list, Context const& context, std::vector<TunnelVia>& vias) {
   list.forEachElement([&](Node const& node) {
      Target<TunnelVia> via{context};
      readObject(node, tunnelViaMembers, via);
      vias.push_back(via.item);
   });
}

using TunnelWays = OfTunnel<Tunnel::TunnelFib::Entry>;

constexpr auto tunnelMembers = std::to_array<Member<Target<TunnelWays>>>({
    {"tunnel", [](Node const& n, Target<TunnelWays>& t) { t.item.tunnelId = ownTunnelIdOf(n); }, true},
    {"vias", [](Node const& n, Target<TunnelWays>& t) { readTunnelVias(n, t.context, t.item.value.vias); }},
    {"backupVias", [](Node const& n, Target<TunnelWays>& t) { readTunnelVias(n, t.context, t.item.value.backupVias); }},
    {"encap", [](Node const& n, Target<TunnelWays>& t) { t.item.value.ipEncap = ipEncapOf(n); }},
});

constexpr auto labelStackMembers = std::to_array<Member<Target<LabelStack>>>({
    {"id",
     [](Node const& n, Target<LabelStack>& t) {
        t.item.id = n.number<U64>();
        if (t.item.id == 0) {
           n.fail("0 is no label stack");
        }
     },
     true},
    {"labels",
     [](Node const& n, Target<LabelStack>& t) {
        t.item.labels = n.parsed<Lumen::MplsLabelOperation>("a label operation such as push 100 200");
     },
     true},
});

using TunnelName = OfTunnel<std::string>;

constexpr auto tunnelNameMembers = std::to_array<Member<Target<TunnelName>>>({
    {"tunnel", [](Node const& n, Target<TunnelName>& t) { t.item.tunnelId = ownTunnelIdOf(n); }, true},
    {"name", [](Node const& n, Target<TunnelName>& t) { t.item.value = n.text(); }, true},
});

constexpr auto policyMembers = std::to_array<Member<Target<Policy>>>({
    {"endpoint", [](Node const& n, Target<Policy>& t) { t.item.key.endpoint = genAddrOf(n); }, true},
    {"color", [](Node const& n, Target<Policy>& t) { t.item.key.color = n.number<U32>(); }, true},
    {"tunnel", [](Node const& n, Target<Policy>& t) { t.item.tunnelId = ownTunnelIdOf(n); }, true},
});

struct ClassTarget {
   Context const& context;
   U64& taken;  // the code points of the override so far
   SrTePolicy::CbfClass item{};
};

void failIfEmpty(Node const& list) {
   if (list.list().size() == 0) {
      list.fail("empty");
   }
}

void readCodePoints(Node const& list, ClassTarget& target) {
   failIfEmpty(list);
   list.forEachElement([&](Node const& node) {
      auto const dscp = static_cast<U8>(node.number(63));
      if ((target.taken >> dscp & 1) != 0) {
         node.fail("given twice");
      }
      target.taken |= U64{1} << dscp;
      target.item.dscp.push_back(dscp);
   });
}

constexpr auto classMembers = std::to_array<Member<ClassTarget>>({
    {"dscp", readCodePoints, true},
    {"fec", [](Node const& n, ClassTarget& t) { t.item.fecId = t.context.policyFec(n).value(); }, true},
});

void readClasses(Node const& list, Target<FecOverride>& target) {
   failIfEmpty(list);
   U64 taken = 0;
   list.forEachElement([&](Node const& node) {
      ClassTarget read{target.context, taken};
      readObject(node, classMembers, read);
      target.item.classes.push_back(std::move(read.item));
   });
}

constexpr auto fecOverrideMembers = std::to_array<Member<Target<FecOverride>>>({
    {"fec", [](Node const& n, Target<FecOverride>& t) { t.item.fecId = t.context.routeFec(n); }, true},
    {"classes", readClasses, true},
});

// What the entries of a tunnel table hold: an endpoint, or a whole VXLAN next hop.
template <class Entry>
constexpr Member<Target<OfTunnel<Entry>>> tableEntryMember;
template <>
constexpr Member<Target<OfTunnel<TunnelEntry>>> tableEntryMember<TunnelEntry>{
    "endpoint", [](Node const& n, Target<OfTunnel<TunnelEntry>>& t) { t.item.value.endpoint = genPrefixOf(n); }, true};
template <>
constexpr Member<Target<OfTunnel<EvpnVxlanTunnelEntry>>> tableEntryMember<EvpnVxlanTunnelEntry>{
    "via", [](Node const& n, Target<OfTunnel<EvpnVxlanTunnelEntry>>& t) { t.item.value = readEvpnVia(n, t.context); },
    true};

// Within a table an index alone names the tunnel.
template <class Entry>
constexpr auto tableMembers = std::to_array<Member<Target<OfTunnel<Entry>>>>(
    {{"index", [](Node const& n, Target<OfTunnel<Entry>>& t) { t.item.tunnelId = n.number(maxTunnelIndex); }, true},
     tableEntryMember<Entry>});

U8 flexAlgorithmOf(Node const& node) {
   return numberFrom<U8>(node, FlexAlgorithm::minId);
}

constexpr auto flexAlgoTableMembers = std::to_array<Member<Target<OfTunnel<TunnelEntry>>>>(
    {tableMembers<TunnelEntry>[0], tableMembers<TunnelEntry>[1], {
        "algorithm",
            [](Node const& n, Target<OfTunnel<TunnelEntry>>& t) { t.item.value.algorithm = flexAlgorithmOf(n); }
     }});

template <class Entry, std::size_t Size>
void readTunnelTable(Node const& list, Context const& context, TunnelType type, std::vector<OfTunnel<Entry>>& all,
                     std::array<Member<Target<OfTunnel<Entry>>>, Size> const& members) {
   std::vector<OfTunnel<Entry>> entries;
   readUniqueObjects(list, context, members, entries, &OfTunnel<Entry>::tunnelId);
   for (OfTunnel<Entry> const& entry : entries) {
      all.push_back({Tunnel::tunnelIdOf(type, entry.tunnelId), entry.value});
   }
}

}  // namespace

Tunnel::TunnelId tunnelIdOf(Node const& node) {
   struct Parts {
      U64 type = 0;
      U64 index = 0;
   } parts;
   static constexpr auto members = std::to_array<Member<Parts>>({
       {"type", [](Node const& n, Parts& p) { p.type = tunnelTypeOf(n); }, true},
       {"index", [](Node const& n, Parts& p) { p.index = n.number(maxTunnelIndex); }, true},
   });
   readObject(node, members, parts);
   return parts.type << Tunnel::tunnelIndexBits | parts.index;
}

void readTunnels(Node const& node, Context& context) {
   readUniqueObjects(node, context, tunnelMembers, context.state.tunnels, &TunnelWays::tunnelId);
}

void readLabelStacks(Node const& node, Context& context) {
   readUniqueObjects(node, context, labelStackMembers, context.state.labelStacks, &LabelStack::id);
}

void readTunnelTables(Node const& node, Context& context) {
   node.forEachMember([&](Node const& table) {
      auto const type = std::ranges::find(tunnelTypeNames, table.key(), [](auto const& named) { return named.first; });
      if (type == tunnelTypeNames.end() || type->second == TunnelType::srTePolicy) {
         table.fail("no such tunnel table");
      }
      auto const read = [&](auto& entries, auto const& members) {
         readTunnelTable(table, context, type->second, entries, members);
      };
      if (type->second == TunnelType::evpnVxlan) {
         read(context.state.evpnTunnels, tableMembers<EvpnVxlanTunnelEntry>);
      } else if (type->second == TunnelType::isisFlexAlgo) {
         read(context.state.tunnelEntries, flexAlgoTableMembers);
      } else {
         read(context.state.tunnelEntries, tableMembers<TunnelEntry>);
      }
   });
}

void readTunnelNames(Node const& node, Context& context) {
   readUniqueObjects(node, context, tunnelNameMembers, context.state.tunnelNames, &TunnelName::tunnelId);
}

void readPolicies(Node const& node, Context& context) {
   readUniqueObjects(node, context, policyMembers, context.state.policies, &Policy::key);
}

void readFecOverrides(Node const& node, Context& context) {
   readUniqueObjects(node, context, fecOverrideMembers, context.state.fecOverrides, &FecOverride::fecId);
}

void readFlexAlgorithms(Node const& node, Context& context) {
   Zam::HashMap<U8, bool> seen;
   node.forEachMember([&](Node const& member) {
      U8 const id = flexAlgorithmOf(member);
      if (seen.contains(id)) {
         member.fail("another flexible algorithm has this number");
      }
      seen.insertOrReplace(id, true);
      context.state.flexAlgorithms.push_back({id, std::string(member.key())});
   });
}

}  // namespace state
