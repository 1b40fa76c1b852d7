#include "NexthopGroupTesting.h"

// How each kind of group looks stands in the golden outputs of the examples; here is what they do not show.
namespace Kiv::Testing {

namespace {

using Routing::NexthopGroup::NexthopGroupConfigEntry;

// Counts what it is asked.
class Counting final : public NexthopGroupCliCounterInterface {
 public:
   CounterEntry getCounters(CounterIndex const& index) override {
      ++asked;
      return {{}, index.counterIndex, index.chipMask.chips};
   }
   U32 asked = 0;
};

class NexthopGroupDisplayTest : public ::testing::Test {
 protected:
   // Many groups of one entry, each with a counter.
   void manyGroupsAre() {
      auto const keys = box_.manager->create<Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTableWriter>(
          Routing::NexthopGroup::counterKeyTablePath, groups);
      for (U32 id = 1; id <= groups; ++id) {
         box_.groupIs("g" + std::to_string(id), id, 1);
         keys->counterKeyInfoIs(id, 0, {id, {{}, 3}});
      }
      auto const helper = NexthopGroupCounterHelperIs();
      helper->mountCounterVaults(box_.manager);
      counters_ = helper;
   }
   NexthopGroupDetailHelper counted() const {
      auto detail = box_.detail();
      detail.counterHelper = counters_;
      detail.counterInterface = counting_;
      return detail;
   }
   static std::string shown(NexthopGroupDetailHelper const& detail) {
      std::string names;
      auto const model = testsupport::StrictJson::parse(GroupBox::printed(detail, 2));
      for (auto const& [name, group] : model->find("nexthopGroups")->members) {
         names += name + ' ';
      }
      return names;
   }

   static constexpr U32 groups = 3000;
   GroupBox box_{groups};
   Zam::Ptr<NexthopGroupCounterHelper const> counters_;
   Zam::Ptr<Counting> const counting_ = Zam::makePtr<Counting>();
};

// A name and an id at once, groups of one id, and what a program never asks without.
TEST_F(NexthopGroupDisplayTest, whichGroups) {
   box_.groupIs("a", 5, 1);
   box_.groupIs("b", 5, 1);
   auto detail = box_.detail();
   detail.nhgId = 5;
   EXPECT_EQ(shown(detail), "a b ");
   detail.nhgName = "a";
   EXPECT_EQ(shown(detail), "a ");
   detail.nhgId = 6;
   EXPECT_EQ(shown(detail), "");
   detail.nhgEntryStatus = nullptr;
   detail.nhgId = 0;
   EXPECT_EQ(shown(detail), "a ");
   EXPECT_EQ(shown(NexthopGroupDetailHelper()), "");
}

// A long output streams, and another source may tell what the counters have counted.
TEST_F(NexthopGroupDisplayTest, longOutputs) {
   manyGroupsAre();
   std::string const whole = box_.printed(counted(), 2);
   EXPECT_GT(whole.size(), 3 * cliprint::globalBufsize);
   EXPECT_EQ(counting_->asked, groups);
   EXPECT_NE(whole.find(R"("packets":2999,"bytes":3,)"), std::string::npos);
}

// A VRF that the hardware does not know, and a box that has no ids.
TEST_F(NexthopGroupDisplayTest, unprogrammedGroups) {
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

TEST_F(NexthopGroupDisplayTest, groupsOfOneIdShareARow) {
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
