#include "NexthopGroupTesting.h"

// How each kind of group looks stands in the golden outputs of the examples; here is what they do not show.
namespace Kiv::Testing {

namespace {

// Counts what it is asked, and can interrupt on the way.
class Counting final : public NexthopGroupCliCounterInterface {
 public:
   CounterEntry getCounters(CounterIndex const& index) override {
      ++asked;
      cliprint::interruptedIs(asked == interruptAt);
      return {{}, index.counterIndex, index.chipMask.chips};
   }
   U32 asked = 0;
   U32 interruptAt = 0;
};

class NexthopGroupDetailTest : public ::testing::Test {
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
TEST_F(NexthopGroupDetailTest, whichGroups) {
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
TEST_F(NexthopGroupDetailTest, longOutputs) {
   manyGroupsAre();
   std::string const whole = box_.printed(counted(), 2);
   EXPECT_GT(whole.size(), 3 * cliprint::globalBufsize);
   EXPECT_EQ(counting_->asked, groups);
   EXPECT_NE(whole.find(R"("packets":2999,"bytes":3,)"), std::string::npos);
   counting_->asked = 0;
   counting_->interruptAt = groups / 2;
   testing_cliprint::CapturedFile file;
   EXPECT_FALSE(counted().render(static_cast<U32>(file.fd()), 2));
   EXPECT_EQ(counting_->asked, groups / 2);
   EXPECT_TRUE(whole.starts_with(file.text()) && !file.text().empty());
}

}  // namespace

}  // namespace Kiv::Testing
