#include "NexthopGroup/EntryStatus.h"
#include "NexthopGroup/NexthopGroupEntryToCounterKeyTable.h"
#include "Routing/NexthopGroup/Config.h"
#include "tests/Vault/VaultTesting.h"

namespace NexthopGroup {

namespace {

using Vault::Testing::patch;

// Names that differ at their ends and in their lengths, up to the longest.
std::string nameOf(U32 i) {
   std::string const number = std::to_string(i);
   std::size_t const length = i % 3 == 0 ? Routing::NexthopGroup::maxNameLength : 8 + i % 60;
   return std::string(length - number.size(), static_cast<char>('a' + i % 2)) + number;
}

class EntryStatusTest : public Vault::Testing::TableTest {
 protected:
   static constexpr U32 groups = 30;

   void fill() const {
      EntryStatusWriter writer(path_, {.capacity = 64});
      for (U32 i = 0; i < groups; ++i) {
         writer.nexthopGroupIdIs(nameOf(i), i + 1);
      }
   }
   U64 row(U32 index) const {
      return Vault::Testing::slotOffset<EntryRecord>(path_, index) + offsetof(Vault::Slot<EntryRecord>, words);
   }
   static std::map<std::string, U32> walked(EntryStatus const& reader) {
      std::map<std::string, U32> found;
      reader.walk([&](std::string_view name, U32 id) { EXPECT_TRUE(found.emplace(name, id).second) << name; });
      return found;
   }
};

TEST_F(EntryStatusTest, findsIdsByName) {
   Vault::Testing::Random random(9);
   std::map<std::string, U32> oracle;
   EntryStatusWriter writer(path_, {.capacity = 32});
   EntryStatus const reader(path_);
   for (U32 step = 0; step < 3000; ++step) {
      auto const name = nameOf(random.below(30));
      if (U32 const id = random.below(4); id == 0) {
         ASSERT_EQ(writer.nexthopGroupIdDel(name), oracle.erase(name) == 1);
      } else {
         writer.nexthopGroupIdIs(name, id);  // ids repeat
         oracle[name] = id;
      }
      auto const sought = nameOf(random.below(31));
      auto const expected = oracle.find(sought);
      ASSERT_EQ(reader.nexthopGroupNameToId(sought), expected != oracle.end() ? expected->second : 0);
   }
   EXPECT_EQ(walked(reader), oracle);
   EXPECT_EQ(reader.entries(), oracle.size());
}

// What is no name is refused where a group is configured, and is no group's where one is looked for.
TEST_F(EntryStatusTest, namesHaveABound) {
   using namespace std::string_literals;
   EntryStatusWriter writer(path_, {.capacity = 4});
   std::string const longest(127, 'n');
   for (auto const& name : {""s, longest + "n", "a b"s, "a\tb"s, "a\0"s, "\x7f"s}) {
      EXPECT_THROW(writer.nexthopGroupIdIs(name, 1), Zam::RangeError) << name;
      EXPECT_THROW((Routing::NexthopGroup::NexthopGroupConfigEntry(name, Routing::NexthopGroup::NexthopGroupType::ip)),
                   Zam::RangeError);
      EXPECT_EQ(writer.nexthopGroupNameToId(name), 0U);
      EXPECT_FALSE(writer.nexthopGroupIdDel(name));
   }
   EXPECT_THROW(writer.nexthopGroupIdIs("a", 0), Zam::RangeError);
   writer.nexthopGroupIdIs(longest, 7);
   writer.nexthopGroupIdIs("\xc3\xa9", 8);
   EXPECT_EQ(writer.nexthopGroupNameToId(longest), 7U);
   EXPECT_EQ(writer.nexthopGroupNameToId("\xc3\xa9"), 8U);
   EXPECT_EQ(writer.nexthopGroupNameToId(longest.substr(1)), 0U);
}

// A row in the middle that no writer made: its group is lost and told of, the others are not.
TEST_F(EntryStatusTest, damageCostsItsGroupAlone) {
   using Case = std::tuple<U64, U32, bool>;
   for (auto const& [offset, value, nameStays] :
        {Case{offsetof(EntryRecord, id), 0, true}, Case{offsetof(EntryRecord, sum), 5, true},
         Case{2, 0x01010101, false}, Case{0, 0, false}}) {
      fill();
      patch(path_, row(13) + offset, value);
      EntryStatus const reader(path_);
      EXPECT_EQ(walked(reader).size(), groups - 1);
      EXPECT_EQ(reader.corruptions(), 1U);
      EXPECT_TRUE(reader.corruption().starts_with(path_ + ": damaged nexthop group, id ")) << reader.corruption();
      if (nameStays) {
         EXPECT_THROW(reader.nexthopGroupNameToId(nameOf(13)), Vault::CorruptionError);
         for (U32 i = 0; i < groups; ++i) {
            EXPECT_EQ(i == 13 ? i + 1 : reader.nexthopGroupNameToId(nameOf(i)), i + 1);
         }
      }
      EntryStatusWriter const next(path_);
      EXPECT_EQ(next.repaired(), 1U);
      EXPECT_EQ(next.nexthopGroupNameToId(nameOf(13)), 0U);
      EXPECT_EQ(next.entries(), groups - 1);
   }
}

using CounterKeyTableTest = Vault::Testing::TableTest;

}  // namespace

}  // namespace NexthopGroup
