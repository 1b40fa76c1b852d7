#include "programs/state/SnapshotContext.h"

#include "Lumen/Vni.h"

namespace state {
namespace {

using Routing::NexthopGroup::NexthopGroupEntry;
using Routing::NexthopGroup::NexthopGroupType;

constexpr auto groupTypeNames = [] {
   constexpr auto enumerators = zamEnumerators(NexthopGroupType());
   std::array<std::pair<std::string_view, NexthopGroupType>, enumerators.size()> names{};
   for (std::size_t i = 0; i < names.size(); ++i) {
      names[i] = {enumerators[i].name, enumerators[i].value};
   }
   return names;
}();

struct EntryTarget {
   Context const& context;
   U32 index = 0;
   NexthopGroupEntry entry{};
};

constexpr auto entryMembers = std::to_array<Member<EntryTarget>>({
    {"index", [](Node const& n, EntryTarget& t) { t.index = n.number<U32>(); }},
    {"nexthop", [](Node const& n, EntryTarget& t) { t.entry.nextHop = genAddrOf(n); }},
    {"interface", [](Node const& n, EntryTarget& t) { t.entry.intfId = t.context.interface(n); }},
    {"labels",
     [](Node const& n, EntryTarget& t) {
        t.entry.labels = n.parsed<Lumen::MplsLabelOperation>("a label operation such as push 100 200");
     }},
    {"source", [](Node const& n, EntryTarget& t) { t.entry.tunnelSource = genAddrOf(n); }},
    {"destination", [](Node const& n, EntryTarget& t) { t.entry.tunnelDestination = genAddrOf(n); }},
    {"key", [](Node const& n, EntryTarget& t) { t.entry.tunnelKey = n.number<U32>(); }},
    {"weight", [](Node const& n, EntryTarget& t) { t.entry.weight = numberFrom<U16>(n, 1); }},
});

struct GroupTarget {
   Context const& context;
   NexthopGroup group{};
};

// An entry that does not say its index comes right after the one before it.
void readEntries(Node const& list, GroupTarget& target) {
   auto& entries = target.group.entries;
   auto const read = [&](Node const& node) {
      U64 const next = entries.empty() ? 0 : U64{entries.back().first} + 1;
      EntryTarget entry{target.context, static_cast<U32>(next)};
      readObject(node, entryMembers, entry);
      if (next > std::numeric_limits<U32>::max() && entry.index == 0) {
         node.fail("its index would be beyond the largest");
      }
      return std::pair(entry.index, entry.entry);
   };
   readUnique(list, entries, read, [](auto const& entry) { return entry.first; });
}

constexpr auto groupMembers = std::to_array<Member<GroupTarget>>({
    {"id", [](Node const& n, GroupTarget& t) { t.group.id = numberFrom<U32>(n, 1); }},
    {"type", [](Node const& n, GroupTarget& t) { t.group.type = namedOf(n, groupTypeNames); }, true},
    {"entries", readEntries},
});

// Of a group that is given as a number nothing but its id is known.
NexthopGroup readGroup(Node const& node, Context const& context) {
   if (!Routing::NexthopGroup::isName(node.key())) {
      node.fail("the name is not of 1 to " + std::to_string(Routing::NexthopGroup::maxNameLength) +
                " bytes without blanks");
   }
   GroupTarget target{context};
   target.group.name = node.key();
   if (!node.element().is_object()) {
      target.group.id = numberFrom<U32>(node, 1);
      return target.group;
   }
   readObject(node, groupMembers, target);
   for (auto const& [index, entry] : target.group.entries) {
      if (target.group.type == NexthopGroupType::vxlan && entry.tunnelKey > Lumen::Vni::max) {
         node.fail("the key of vxlan is not from 0 to " + std::to_string(Lumen::Vni::max));
      }
   }
   return target.group;
}

struct CounterTarget {
   Context const& context;
   NexthopGroupCounter counter{};
};

constexpr auto countMembers = std::to_array<Member<FlexCounters::Counter>>({
    {"packets", [](Node const& n, FlexCounters::Counter& c) { c.packets = n.number<U64>(); }},
    {"bytes", [](Node const& n, FlexCounters::Counter& c) { c.bytes = n.number<U64>(); }},
});

constexpr auto counterMembers = std::to_array<Member<CounterTarget>>({
    {"group", [](Node const& n, CounterTarget& t) { t.counter.groupId = t.context.nexthopGroup(n); }, true},
    {"entry", [](Node const& n, CounterTarget& t) { t.counter.entry = n.number<U32>(); }, true},
    {"chips", [](Node const& n, CounterTarget& t) { t.counter.chips = numberFrom<U64>(n, 1); }},
    {"packets", [](Node const& n, CounterTarget& t) { t.counter.current.packets = n.number<U64>(); }},
    {"bytes", [](Node const& n, CounterTarget& t) { t.counter.current.bytes = n.number<U64>(); }},
    {"cleared", [](Node const& n, CounterTarget& t) { readObject(n, countMembers, t.counter.cleared.emplace()); }},
});

}  // namespace

void readNexthopGroups(Node const& node, Context& context) {
   Zam::HashMap<U32, bool> seen;
   node.forEachMember([&](Node const& member) {
      NexthopGroup group = readGroup(member, context);
      if (group.id != 0 && seen.contains(group.id)) {
         member.fail("another nexthop group has this id");
      }
      seen.insertOrReplace(group.id, true);
      context.nexthopGroups.insertOrReplace(member.key(), group.id);
      context.state.nexthopGroups.push_back(std::move(group));
   });
}

void readNexthopGroupCounters(Node const& node, Context& context) {
   auto const read = [&](Node const& element) {
      CounterTarget target{context};
      readObject(element, counterMembers, target);
      return target.counter;
   };
   readUnique(node, context.state.nexthopGroupCounters, read,
              [](NexthopGroupCounter const& counter) { return U64{counter.groupId} << 32U | counter.entry; });
}

std::vector<ProgrammedGroup> readProgrammedGroups(Node const& node, Context const& context) {
   std::vector<ProgrammedGroup> groups;
   node.forEachMember([&](Node const& member) {
      ProgrammedGroup group{context.nexthopGroup(member, member.key())};
      readUnique(
          member, group.entries, [](Node const& entry) { return entry.number<U32>(); },
          [](U32 entry) { return entry; });
      groups.push_back(std::move(group));
   });
   return groups;
}

}  // namespace state
