#include "FlexCounters/CounterTable.h"
#include "tests/Vault/VaultTesting.h"

namespace FlexCounters {

namespace {

using CounterTableTest = Vault::Testing::TableTest;

constexpr U64 biggest = ~U64{0};

TEST_F(CounterTableTest, holdsAnyNumbersUnderAnyIndex) {
   Vault::Testing::Random random(5);
   std::map<U64, std::pair<U64, U64>> oracle;
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
         oracle[index] = {packets, packets / 3};
      }
      for (U64 const sought : corners) {
         auto const expected = oracle.find(sought);
         auto const counter = reader.counter(sought);
         ASSERT_EQ(counter.has_value(), expected != oracle.end());
         ASSERT_TRUE(!counter || std::pair(counter->packets, counter->bytes) == expected->second);
      }
   }
   std::map<U64, std::pair<U64, U64>> walked;
   reader.walk([&](U64 index, Counter const& counter) {
      EXPECT_TRUE(walked.emplace(index, std::pair(counter.packets, counter.bytes)).second);
   });
   EXPECT_EQ(walked, oracle);
   EXPECT_EQ(reader.counters(), oracle.size());
}

// Packets and bytes that belong together are read together while another process counts.
TEST_F(CounterTableTest, packetsAndBytesAreOfOneMoment) {
   CounterTableWriter(path_, {.capacity = 4}).counterIs(7, {0, 0});
   Vault::Testing::OtherProcess counting([this] {
      CounterTableWriter writer(path_);
      for (U64 packets = 0;; ++packets) {
         writer.counterIs(7, {packets, packets * 64});
      }
   });
   CounterTable const reader(path_);
   auto const start = std::chrono::steady_clock::now();
   U64 highest = 0;
   while (Vault::Testing::within(start, std::chrono::milliseconds(200))) {
      if (auto const counter = reader.counter(7)) {
         ASSERT_EQ(counter->bytes, counter->packets * 64);
         ASSERT_GE(counter->packets, highest);
         highest = counter->packets;
      }
   }
   EXPECT_TRUE(counting.stop());
   EXPECT_GT(highest, 0U);
}

TEST(FeatureIdTest, tablesAreCalledByTheirFeatureAndUnit) {
   EXPECT_EQ(counterTablePath(FeatureId{27}, allUnits), "flexCounters/counterTable/nexthopGroup/4294967295");
   EXPECT_EQ(snapshotTablePath(FeatureId::nexthopGroup, 0), "flexCounters/snapshotTable/nexthopGroup/0");
   EXPECT_EQ(stringValue(FeatureId{28}), "28");
}

}  // namespace

}  // namespace FlexCounters
