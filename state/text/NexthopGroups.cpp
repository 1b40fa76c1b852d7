#include "state/text/Sections.h"

#include <array>

namespace state {
namespace {

using Routing::NexthopGroup::NexthopGroupEntry;
using Routing::NexthopGroup::NexthopGroupType;

constexpr auto groupTypeNames = [] {
   constexpr auto enumerators = zamEnumerators(NexthopGroupType());
   std::array<Name<NexthopGroupType>, enumerators.size()> names{};
   for (std::size_t i = 0; i < names.size(); ++i) {
      names[i] = {enumerators[i].name, enumerators[i].value};
   }
   return names;
}();

using GroupId = Number<U32, 1>;
using IndexedEntry = std::pair<U32, NexthopGroupEntry>;

struct EntryIndex {
   using Record = IndexedEntry;
   static std::optional<U32> get(Record const& entry) { return entry.first; }
   static void set(Record& entry, U32 index, Node const&) { entry.first = index; }
};

struct EntryRecord {
   using Value = IndexedEntry;
   using Entry = NexthopGroupEntry;
   static constexpr std::string_view name = "nexthopGroupEntry";
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<Number<U32>, EntryIndex>("index").about(
            "Without it, one more than that of the entry before; 0 for the first."),
        member<GenAddr, &Value::second, &Entry::nextHop>("nexthop"),
        member<InterfaceRef, &Value::second, &Entry::intfId>("interface"),
        member<Labels, &Value::second, &Entry::labels>("labels"),
        member<GenAddr, &Value::second, &Entry::tunnelSource>("source").about(
            "Of the outer header, as the destination."),
        member<GenAddr, &Value::second, &Entry::tunnelDestination>("destination"),
        member<Number<U32>, &Value::second, &Entry::tunnelKey>("key").about("Of GRE, or the VNI of VXLAN. 0 is none."),
        member<Number<U16, 1>, &Value::second, &Entry::weight>("weight")});
};

// An entry that does not say its index comes right after the one before it.
struct Entries : UniqueList<Object<EntryRecord>, By<&IndexedEntry::first>> {
   static Value read(Node const& node, Reading& reading) {
      U64 next = 0;
      Value entries;
      Zam::HashMap<U32, bool> seen;
      node.forEachElement([&](Node const& element) {
         IndexedEntry entry{static_cast<U32>(next), {}};
         Object<EntryRecord>::readInto(element, reading, entry);
         if (next > std::numeric_limits<U32>::max() && entry.first == 0) {
            element.fail("its index would be beyond the largest");
         }
         if (seen.contains(entry.first)) {
            element.fail("given twice");
         }
         seen.insertOrReplace(entry.first, true);
         next = U64{entry.first} + 1;
         entries.push_back(std::move(entry));
      });
      return entries;
   }
};

struct GroupRecord {
   using Value = NexthopGroup;
   static constexpr std::string_view name = "nexthopGroup";
   static constexpr std::string_view rules =
       R"("description":"A group without an id is configured, but has none yet.",)"
       R"("if":{"properties":{"type":{"const":"vxlan"}}},)"
       R"("then":{"properties":{"entries":{"items":{"properties":{"key":{"maximum":16777215}}}}}})";
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<GroupId, &Value::id>("id"), member<NameOrNumber<groupTypeNames, maxU8>, &Value::type>("type").required(),
        member<Entries, &Value::entries>("entries")});
   static void check(Node const& node, Reading const&, Value const& group) {
      for (auto const& [index, entry] : group.entries) {
         checkVniKey(node, group.type == NexthopGroupType::vxlan, entry.tunnelKey);
      }
   }
};

// Of a group that is given as a number nothing but its id is known.
struct NamedGroup {
   using Value = NexthopGroup;
   static constexpr std::string_view keySchema =
       R"(,"propertyNames":{"pattern":"^[^\\s\\u0000-\\u001f\\u007f]{1,127}$"})";

   static NexthopGroup read(Node const& node, Reading& reading) {
      if (!Routing::NexthopGroup::isName(node.key())) {
         node.fail("the name is not of 1 to " + std::to_string(Routing::NexthopGroup::maxNameLength) +
                   " bytes without blanks");
      }
      NexthopGroup group{.name = std::string(node.key())};
      if (node.element().is_object()) {
         Object<GroupRecord>::readInto(node, reading, group);
      } else {
         group.id = GroupId::read(node, reading);
      }
      reading.nexthopGroups.insertOrReplace(node.key(), group.id);
      return group;
   }
   static std::string key(Writing const&, NexthopGroup const& group) { return group.name; }
   static void write(JsonWriter& out, Writing const& writing, NexthopGroup const& group) {
      if (group.id != 0 && group.entries.empty() && group.type == NexthopGroupType::invalid) {
         out.number(group.id);
      } else {
         Object<GroupRecord>::write(out, writing, group);
      }
   }
   static std::string schema(Schema& schema) {
      return "\"anyOf\":[{" + GroupId::schema(schema) + "},{" + Object<GroupRecord>::schema(schema) + "}]";
   }
};

// Those that have one have ids of their own.
struct Groups : Named<NamedGroup> {
   static Value read(Node const& node, Reading& reading) {
      Zam::HashMap<U32, bool> seen;
      Value groups;
      node.forEachMember([&](Node const& element) {
         groups.push_back(NamedGroup::read(element, reading));
         U32 const id = groups.back().id;
         if (id != 0 && seen.contains(id)) {
            element.fail("another nexthop group has this id");
         }
         seen.insertOrReplace(id, true);
      });
      return groups;
   }
};

struct CountsRecord {
   using Value = FlexCounters::Counter;
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<Number<U64>, &Value::packets>("packets"), member<Number<U64>, &Value::bytes>("bytes")});
};

struct CounterRecord {
   using Value = NexthopGroupCounter;
   using Counter = FlexCounters::Counter;
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<GroupRef, &Value::groupId>("group").required(), member<Number<U32>, &Value::entry>("entry").required(),
        member<Number<U64, 1>, &Value::chips>("chips").about("The chips that have the counter, one bit for each."),
        member<Number<U64>, &Value::current, &Counter::packets>("packets"),
        member<Number<U64>, &Value::current, &Counter::bytes>("bytes"),
        member<Object<CountsRecord>, &Value::cleared>("cleared")});
};

struct ByEntry : KeyBase {
   static U64 key(NexthopGroupCounter const& counter) { return U64{counter.groupId} << 32U | counter.entry; }
};

using ProgrammedEntries = UniqueList<Number<U32>, By<>>;

}  // namespace

ProgrammedGroups::Value ProgrammedGroups::read(Node const& node, Reading& reading) {
   Value groups;
   node.forEachMember([&](Node const& member) {
      U32 const id = reading.nexthopGroup(member, member.key());
      groups.push_back({id, ProgrammedEntries::read(member, reading)});
   });
   return groups;
}

void ProgrammedGroups::write(JsonWriter& out, Writing const& writing, Value const& groups) {
   out.open('{');
   for (ProgrammedGroup const& group : groups) {
      out.key(writing.nexthopGroup(group.id));
      ProgrammedEntries::write(out, writing, group.entries);
   }
   out.close('}');
}

std::string ProgrammedGroups::schema(Schema& schema) {
   return "\"type\":\"object\",\"additionalProperties\":{" + ProgrammedEntries::schema(schema) +
          ",\"uniqueItems\":true}";
}

std::span<Member<State> const> nexthopGroupSections() {
   static constexpr auto sections = std::to_array<Member<State>>(
       {member<Groups, &State::nexthopGroups>("nexthopGroups")
            .about("By name. A number is the id of a group of which nothing else is known."),
        member<UniqueList<Object<CounterRecord>, ByEntry>, &State::nexthopGroupCounters>("nexthopGroupCounters")
            .about("What the entries of groups have carried, and what that was when the counters were last cleared.")
            .in(snapshotPart)});
   return sections;
}

}  // namespace state
