#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/UnprogrammedRouteStatus.h"
#include "VaultTesting.h"

namespace Vault::Testing {

namespace {

using Lumen::AddressFamily;
using Row = std::pair<VrfId, Lumen::IpGenPrefix>;

Lumen::IpGenPrefix prefixOf(U32 i) {
   // 0.0.0.0/0 and ::/0 are among them: alike in all but the family.
   return i % 2 == 0 ? Lumen::IpGenPrefix(Lumen::Prefix(Lumen::IpAddr(i << 20U), i == 0 ? 0 : 20))
                     : Lumen::IpGenPrefix(Lumen::Ip6Prefix(Lumen::Ip6Addr(U64{i - 1} << 20U, 0), i == 1 ? 0 : 60));
}

}  // namespace

using UnprogrammedRouteTest = TableTest;

TEST_F(UnprogrammedRouteTest, listsAndCountsByVrfAndFamily) {
   Random random(3);
   std::map<Row, U32> oracle;
   auto hardware = Zam::makePtr<Fib::UnprogrammedRouteStatusWriter>(dir_ / "hardware", TableFile::Sizes{100});
   auto kernel = Zam::makePtr<KernelUnprogrammedRoute::UnprogrammedRouteWriter>(dir_ / "kernel", TableFile::Sizes{100});
   Fib::UnprogrammedRouteStatus const hardwareReader(dir_ / "hardware");
   KernelUnprogrammedRoute::UnprogrammedRoute const kernelReader(dir_ / "kernel");
   for (U32 step = 0; step < 8000; ++step) {
      Row const row(random.below(3), prefixOf(random.below(24)));
      U32 const code = random.below(4);
      kernel->errorIs(row.first, row.second, {code});
      if (code != 0) {
         hardware->unprogrammedIs(row.first, row.second);
         oracle[row] = code;
      } else {
         EXPECT_EQ(hardware->unprogrammedDel(row.first, row.second), oracle.erase(row) == 1);
      }
      VrfId const vrfId = random.below(4);
      Row const sought(vrfId, prefixOf(random.below(24)));
      auto const found = oracle.find(sought);
      ASSERT_EQ(hardwareReader.unprogrammed(vrfId, sought.second), found != oracle.end());
      ASSERT_EQ(kernelReader.error(vrfId, sought.second).code, found != oracle.end() ? found->second : 0);
      U32 ipv4 = 0;
      U32 ipv6 = 0;
      for (auto const& [each, error] : oracle) {
         (each.second.family() == AddressFamily::ipv4 ? ipv4 : ipv6) += each.first == vrfId ? 1 : 0;
      }
      auto const errors = kernelReader.errorCount(vrfId);
      ASSERT_EQ(errors.has_value(), ipv4 + ipv6 != 0);
      ASSERT_EQ(errors ? errors->routeCount(AddressFamily::ipv4) : 0, ipv4);
      ASSERT_EQ(errors ? errors->routeCount(AddressFamily::ipv6) : 0, ipv6);
      auto const count = hardwareReader.unprogrammedRouteCount(vrfId);
      ASSERT_EQ(count.has_value(), errors.has_value());
      ASSERT_TRUE(!count || *count == (Fib::UnprogrammedRouteCount{vrfId, ipv4 + ipv6}));
      ASSERT_EQ(hardwareReader.empty(), oracle.empty());
   }
   std::map<Row, U32> walked;
   kernelReader.walk([&](VrfId vrfId, Lumen::IpGenPrefix const& prefix, KernelUnprogrammedRoute::RouteError error) {
      EXPECT_TRUE(walked.emplace(Row(vrfId, prefix), error.code).second);
   });
   EXPECT_EQ(walked, oracle);
   U32 listed = 0;
   hardwareReader.walk([&](VrfId, Lumen::IpGenPrefix const&) { ++listed; });
   EXPECT_EQ(listed, oracle.size());
}

TEST_F(UnprogrammedRouteTest, aListThatIsFullCountsNothingMore) {
   Fib::UnprogrammedRouteStatusWriter writer(dir_ / "table", {3});
   writer.growingIs(false);
   Fib::UnprogrammedRouteStatus const reader(dir_ / "table");
   writer.unprogrammedIs(1, prefixOf(4));
   EXPECT_THROW((writer.unprogrammedIs(2, prefixOf(4)), writer.unprogrammedIs(3, prefixOf(4))), TableFull);
   EXPECT_FALSE(reader.unprogrammedRouteCount(2).has_value()) << "the counts of a VRF that has no route are gone";
   writer.unprogrammedIs(1, prefixOf(5));
   EXPECT_THROW(writer.unprogrammedIs(1, prefixOf(6)), TableFull);
   EXPECT_EQ(reader.unprogrammedRouteCount(1)->count, 2U);
   EXPECT_THROW(writer.unprogrammedIs(1, {}), Zam::RangeError);
   EXPECT_FALSE(reader.unprogrammed(1, {})) << "the row of counts is no route";
   EXPECT_FALSE(writer.unprogrammedDel(1, {}));
}

TEST_F(UnprogrammedRouteTest, theNextWriterCountsAgain) {
   using Record = Records::UnprogrammedRecord;
   {
      Fib::UnprogrammedRouteStatusWriter writer(path_, {9});
      writer.unprogrammedIs(1, prefixOf(4));
      writer.unprogrammedIs(2, prefixOf(5));
   }
   // The counts of VRF 1 come first, for they are counted first; those of VRF 2 third.
   patch(path_, slotOffset<Record>(path_, 0) + offsetof(Slot<Record>, words) + offsetof(Record, values), U32{77});
   patch(path_, slotOffset<Record>(path_, 2), nextSequence(4, SlotState::updating));
   Fib::UnprogrammedRouteStatus const reader(path_);
   EXPECT_EQ(reader.unprogrammedRouteCount(1)->count, 77U);
   Fib::UnprogrammedRouteStatusWriter const writer(path_);
   EXPECT_EQ(reader.unprogrammedRouteCount(1)->count, 1U);
   EXPECT_EQ(reader.unprogrammedRouteCount(2)->count, 1U);
   EXPECT_TRUE(reader.unprogrammed(2, prefixOf(5)));
}

}  // namespace Vault::Testing
