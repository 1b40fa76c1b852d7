#include "NexthopGroupTesting.h"

#include <fcntl.h>
#include <unistd.h>

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

TEST_F(NexthopGroupDetailTest, whichGroups) {
   for (auto const& [name, id] :
        std::map<std::string, U32>{{"a", 5}, {"b", 5}, {"c", 6}, {"noId", 0}, {"summary", 7}}) {
      box_.groupIs(name, id, 1);
   }
   using Case = std::tuple<char const*, U32, char const*>;
   for (auto const& [name, id, expected] :
        {Case{"", 0, "a b c noId summary "}, Case{"summary", 0, "summary "}, Case{"noId", 0, "noId "},
         Case{"", 5, "a b "}, Case{"", 8, ""}, Case{"a", 5, "a "}, Case{"a", 6, ""}, Case{"x", 0, ""}}) {
      auto detail = box_.detail();
      detail.nhgName = name;
      detail.nhgId = id;
      EXPECT_EQ(shown(detail), expected) << name << id;
   }
   EXPECT_EQ(shown(NexthopGroupDetailHelper()), "");
   auto detail = box_.detail();
   detail.nhgEntryStatus = nullptr;
   EXPECT_EQ(shown(detail), "a b c noId summary ");
}

// What an entry says of itself, by the type of its group.
TEST_F(NexthopGroupDetailTest, entries) {
   using enum NexthopGroupType;
   NexthopGroupEntry all{{},
                         Lumen::IpGenAddr::parse("192.0.2.1"),
                         Lumen::IntfId::named("Ethernet1"),
                         {Lumen::MplsLabelOperation::Operation::push, {Lumen::MplsLabel(16)}},
                         Lumen::IpGenAddr::parse("192.0.2.8"),
                         Lumen::IpGenAddr::parse("192.0.2.9"),
                         7};
   NexthopGroupEntry labelsOnly{{}, {}, {}, all.labels};
   NexthopGroupEntry sourceOnly{{}, {}, {}, {}, all.tunnelSource};
   std::string const hop = "  via 192.0.2.1, Ethernet1";
   std::string const ends = " source 192.0.2.8 destination 192.0.2.9";
   for (auto const& [type, entry, text] :
        std::initializer_list<std::tuple<NexthopGroupType, NexthopGroupEntry, std::string>>{
            {gre, all, hop + ", GRE encap" + ends + " key 7, label 16"},
            {mplsOverUdp, all, hop + ", UDP encap" + ends + " key 7, label 16"},
            {vxlan, all, hop + ", VXLAN encap" + ends + " VNI 7, label 16"},
            {NexthopGroupType{99}, all, hop + ", label 16"},
            {mpls, labelsOnly, "  no next hop, label 16"},
            {gre, sourceOnly, "  no next hop"},
            {gre, {}, "  no next hop"}}) {
      auto const group = box_.groupIs("g", 1, 0, type);
      group->entryIs(0, entry);
      auto const printed = box_.printed(box_.detail(), 1);
      EXPECT_TRUE(printed.ends_with("\n*         0                    0                    0" + text + "\n"))
          << printed;
   }
   auto const group = box_.groupIs("g", 1);
   all.weight = 65535;
   group->entryIs(4294967295, all);
   group->entryIs(7, {});
   box_.vrfStatus->programmedIs(1, {4294967295});
   EXPECT_TRUE(box_.printed(box_.detail(), 1)
                   .ends_with("\n g, Nexthop Group ID 1, IP, size 2\n"
                              "*         7                    0                    0  no next hop, weight 1/65536\n"
                              " 4294967295                    0                    0" +
                              hop + ", label 16, weight 65535/65536\n"));
}

// A long output streams; interrupted, it is cut off, and when nobody takes it, the walk ends soon.
TEST_F(NexthopGroupDetailTest, longOutputs) {
   manyGroupsAre();
   std::string const whole = box_.printed(counted(), 2);
   EXPECT_GT(whole.size(), 3 * cliprint::globalBufsize);
   EXPECT_EQ(counting_->asked, groups);
   EXPECT_NE(whole.find(R"("packets":2999,"bytes":3,)"), std::string::npos);

   counting_->asked = 0;
   counting_->interruptAt = groups / 2;
   testing_cliprint::CapturedFile file;
   ::testing::internal::CaptureStdout();
   EXPECT_FALSE(counted().render(static_cast<U32>(file.fd()), 2));
   EXPECT_EQ(errno, EINTR);
   EXPECT_TRUE(::testing::internal::GetCapturedStdout().starts_with("exiting "));
   EXPECT_EQ(counting_->asked, groups / 2);
   EXPECT_TRUE(whole.starts_with(file.text()) && !file.text().empty());

   counting_->asked = counting_->interruptAt = 0;
   int const full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
   EXPECT_FALSE(counted().render(static_cast<U32>(full), 1));
   EXPECT_EQ(errno, ENOSPC);
   EXPECT_LT(counting_->asked, groups / 2);
   ::close(full);
   EXPECT_EQ(box_.printed(counted(), 2), whole);
}

}  // namespace

}  // namespace Kiv::Testing
