#include "NexthopGroupTesting.h"

namespace Kiv::Testing {

namespace {

using FlexCounters::Counter;
using FlexCounters::CounterTableWriter;
using Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTableWriter;

constexpr U64 biggest = ~U64{0};

class NexthopGroupCounterTest : public ::testing::Test {
 protected:
   static constexpr char const* currentPath = "flexCounters/counterTable/nexthopGroup/4294967295";
   static constexpr char const* snapshotPath = "flexCounters/snapshotTable/nexthopGroup/4294967295";
   static constexpr char const* keyPath = "tunnel/nexthop/counterkeyinfo";

   void keysAre(std::map<std::pair<U32, U32>, U64> const& counters) {
      auto const writer = box_.manager->create<NexthopGroupEntryToCounterKeyTableWriter>(keyPath, 16);
      for (auto const& [key, index] : counters) {
         writer->counterKeyInfoIs(key.first, key.second, {index, {{}, 1}});
      }
   }
   void countersAre(char const* path, std::map<U64, Counter> const& counters) const {
      auto const writer = box_.manager->create<CounterTableWriter>(path, 16);
      for (auto const& [index, counter] : counters) {
         writer->counterIs(index, counter);
      }
   }
   Zam::Ptr<NexthopGroupCounterHelper> helper() const {
      auto helper = NexthopGroupCounterHelperIs();
      helper->mountCounterVaults(box_.manager);
      return helper;
   }

   GroupBox box_;
};

TEST_F(NexthopGroupCounterTest, countsSinceTheLastClear) {
   EXPECT_EQ(NexthopGroupCounterHelperIs()->getCounters(0, 0), CounterEntry());
   countersAre(currentPath, {{0, {5, 6}}});
   EXPECT_EQ(helper()->counterKeyTable(), nullptr);
   EXPECT_EQ(helper()->getCounters(8, 0), CounterEntry()) << "a missing table is an empty one";
   keysAre({{{7, 0}, 100}, {{7, 1}, 101}, {{7, 2}, 102}, {{7, 3}, 103}, {{8, 0}, 0}});
   countersAre(currentPath, {{0, {5, 6}}, {100, {10, 1000}}, {101, {20, 2000}}, {102, {biggest, biggest}}});
   countersAre(snapshotPath,
               {{100, {4, 400}}, {101, {21, 2000}}, {102, {biggest, 0}}, {103, {1, biggest}}, {9, {1, 1}}});
   using Case = std::tuple<U32, U32, U64, U64>;
   auto const counters = helper();
   for (auto const& [groupId, entry, packets, bytes] : {
            Case{7, 0, 6, 600}, Case{7, 1, biggest, 0},  // the snapshot is one packet ahead
            Case{7, 2, 0, biggest},                      //
            Case{7, 3, biggest, 1},                      // a counter that went, but for its snapshot
            Case{8, 0, 5, 6},                            // the counter 0, which has no snapshot
            Case{7, 4, 0, 0},                            // no counter
            Case{0, 0, 0, 0},                            // no group
        }) {
      EXPECT_EQ(counters->getCounters(groupId, entry), (CounterEntry{{}, packets, bytes})) << groupId << ' ' << entry;
   }
}

// Damage is told to the table that has it; in the table of keys it makes an entry one without a counter.
TEST_F(NexthopGroupCounterTest, damagedTables) {
   keysAre({{{7, 0}, 100}});
   countersAre(currentPath, {{100, {10, 1000}}});
   countersAre(snapshotPath, {{100, {4, 400}}});
   auto const ruinBuckets = [this](std::string_view path) {
      for (U64 bucket = 0; bucket < 16; ++bucket) {
         Vault::Testing::patch(box_.fileOf(path), Vault::pageSize + bucket * sizeof(U32), 0xeeeeeeeeU);
      }
   };
   ruinBuckets(snapshotPath);
   auto const counters = helper();
   EXPECT_EQ(counters->getCounters(7, 0), (CounterEntry{{}, 10, 1000}));
   EXPECT_EQ(counters->snapshotTable()->corruptions(), 1U);
   EXPECT_EQ(counters->counterTable()->corruptions(), 0U);
   std::string told;
   ruinBuckets(keyPath);
   counters->counterKeyTable()->corruptionHookIs([&](std::string_view message) { told = message; });
   EXPECT_EQ(counters->getCounters(7, 0), CounterEntry());
   EXPECT_TRUE(told.starts_with(box_.fileOf(keyPath) + ": damaged chain of bucket ")) << told;
}

// A file that is no table costs what it would tell, and is told; clearing puts a table in its place.
TEST_F(NexthopGroupCounterTest, filesThatAreNoTables) {
   keysAre({{{7, 0}, 100}});
   countersAre(currentPath, {{100, {10, 1000}}});
   countersAre(snapshotPath, {{100, {4, 400}}});
   std::ofstream(box_.fileOf(snapshotPath)) << "no table";
   EXPECT_EQ(helper()->getCounters(7, 0), (CounterEntry{{}, 10, 1000}));
   ASSERT_EQ(helper()->mountErrors().size(), 1U);
   EXPECT_TRUE(helper()->mountErrors()[0].bytes().starts_with(box_.fileOf(snapshotPath)))
       << helper()->mountErrors()[0].bytes();
   box_.manager->replace<CounterTableWriter>(snapshotPath, {.capacity = 4}, [](CounterTableWriter& writer) {
      writer.counterIs(100, {9, 900});
   });
   EXPECT_EQ(helper()->getCounters(7, 0), (CounterEntry{{}, 1, 100}));
   std::ofstream(box_.fileOf(currentPath)) << "no table";
   EXPECT_EQ(helper()->getCounters(7, 0), CounterEntry()) << "no difference to what cannot be read";
   EXPECT_EQ(helper()->mountErrors().size(), 1U);
}

}  // namespace

}  // namespace Kiv::Testing
