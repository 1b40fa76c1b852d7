#include "FlexCounters/CounterTable.h"
#include "tests/Vault/VaultTesting.h"

namespace FlexCounters {

namespace {

using CounterTableTest = Vault::Testing::TableTest;

constexpr U64 biggest = ~U64{0};

TEST_F(CounterTableTest, holdsAnyNumbersUnderAnyIndex) {
   Vault::Testing::Random random(5);
   std::map<U64, Counter> oracle;
   CounterTableWriter writer(path_, {.capacity = 40});
   CounterTable const reader(path_);
   EXPECT_EQ(reader.capacity(), 40U);
   std::array<U64, 4> const corners{0, 1, biggest - 1, biggest};
   for (U32 step = 0; step < 4000; ++step) {
      U64 const index = random.below(2) == 0 ? corners[random.below(4)] : U64{random.below(20)} << random.below(60);
      if (oracle.size() == 40 || random.below(3) == 0) {
         ASSERT_EQ(writer.counterDel(index), oracle.erase(index) == 1);
      } else {
         U64 const packets = random.below(4) == 0 ? biggest : random.number();
         writer.counterIs(index, {packets, packets / 3});
         oracle.insert_or_assign(index, Counter{packets, packets / 3});
      }
      for (U64 const sought : corners) {
         auto const expected = oracle.find(sought);
         ASSERT_EQ(reader.counter(sought), expected != oracle.end() ? std::optional(expected->second) : std::nullopt);
      }
   }
   std::map<U64, Counter> walked;
   reader.walk([&](U64 index, Counter const& counter) { EXPECT_TRUE(walked.emplace(index, counter).second); });
   EXPECT_EQ(walked, oracle);
   EXPECT_EQ(reader.counters(), oracle.size());
}

TEST(FeatureIdTest, tablesAreCalledByTheirFeatureAndUnit) {
   EXPECT_EQ(counterTablePath(FeatureId{27}, allUnits), "flexCounters/counterTable/nexthopGroup/4294967295");
   EXPECT_EQ(snapshotTablePath(FeatureId::nexthopGroup, 0), "flexCounters/snapshotTable/nexthopGroup/0");
   EXPECT_EQ(stringValue(FeatureId{28}), "28");
}

}  // namespace

}  // namespace FlexCounters
