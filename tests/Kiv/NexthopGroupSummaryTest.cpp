#include "NexthopGroupTesting.h"

namespace Kiv::Testing {

namespace {

using Routing::NexthopGroup::NexthopGroupConfigEntry;

class NexthopGroupSummaryTest : public ::testing::Test {
 protected:
   GroupBox box_;
};
using NexthopGroupMappingTest = NexthopGroupSummaryTest;

// A VRF that the hardware does not know, and a box that has no ids.
TEST_F(NexthopGroupSummaryTest, unprogrammedGroups) {
   box_.groupIs("with", 1);
   box_.vrfStatus->programmedIs(1, {});
   auto summary = NexthopGroupSummaryHelper{{}, box_.config, box_.entryStatus, box_.hardware, nullptr, "blue"};
   summary.processNexthopGroups();
   summary.vrfName = "default";
   summary.processNexthopGroups();
   EXPECT_EQ(summary.nhgUnprogrammedCount, 1U) << "counting adds to what is there";
   summary.nhgEntryStatus = nullptr;
   summary.processNexthopGroups();
   EXPECT_EQ(summary.nhgUnprogrammedCount, 2U);
   EXPECT_EQ(summary.nhgCount, 1U);
}

TEST(NexthopGroupSizeTest, isBoundedByTheHardware) {
   auto const group = Zam::makePtr<NexthopGroupConfigEntry>("g", NexthopGroupType::ip);
   EXPECT_EQ(getNhgSize(group, 0), 0U);
   for (U32 const index : {0U, 7U, ~U32{0}}) {
      group->entryIs(index, {});
   }
   NexthopGroupEntry heavy;
   heavy.weight = 65535;
   group->entryIs(7, heavy);
   heavy.weight = 0;
   EXPECT_THROW(group->entryIs(7, heavy), Zam::RangeError);
   for (auto const& [maxSize, size] : std::map<U32, U32>{{0, 3}, {1, 1}, {2, 2}, {3, 3}, {4, 3}, {~U32{0}, 3}}) {
      EXPECT_EQ(getNhgSize(group, maxSize), size) << maxSize;
   }
   EXPECT_EQ(getNhgSize(nullptr, 5), 0U);
}

TEST_F(NexthopGroupMappingTest, groupsOfOneIdShareARow) {
   EXPECT_EQ(box_.printed(NexthopGroupMappingHelper(), 2), "{\"nexthopGroups\":{}}\n");
   for (auto const& [name, id] : std::map<std::string, U32>{
            {"b\"c", 100}, {"a", 100}, {"none1", 0}, {"none2", 0}, {"top", 4294967295}, {"low", 9}}) {
      box_.groupIs(name, id);
   }
   EXPECT_EQ(box_.printed(box_.mapping(), 2),
             R"({"nexthopGroups":{"0":"none2","9":"low","100":"b\"c","4294967295":"top"}})"
             "\n");
}

}  // namespace

}  // namespace Kiv::Testing
