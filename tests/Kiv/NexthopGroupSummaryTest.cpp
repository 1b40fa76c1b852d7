#include "NexthopGroupTesting.h"
#include "Zam/TypeRegistry.h"

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

// What the user interrupts ends with a value; the next output is whole again.
TEST_F(NexthopGroupMappingTest, outputThatEndsEarly) {
   box_.groupIs("a", 1, 1);
   auto const expectEnds = [&](auto&& display) {
      cliprint::interruptedIs(true);
      testing_cliprint::CapturedFile file;
      ::testing::internal::CaptureStdout();
      EXPECT_FALSE(display.render(static_cast<U32>(file.fd()), 2));
      EXPECT_EQ(errno, EINTR);
      EXPECT_EQ(::testing::internal::GetCapturedStdout(),
                std::string("exiting ") + cliprint::SigIntException().what() + "\n");
      EXPECT_EQ(file.text(), "");
      EXPECT_FALSE(box_.printed(display, 2).empty());
   };
   expectEnds(box_.summary());
   expectEnds(box_.mapping());
}

// As a scripting layer uses them: by name, with accessors for each attribute.
TEST_F(NexthopGroupSummaryTest, throughTheTypeRuntime) {
   registerTypes();
   box_.groupIs("a", 7, 3);
   auto const& registry = Zam::TypeRegistry::instance();
   auto const& type = *registry.type("Kiv::NexthopGroupSummaryHelper");
   std::any summary = type.construct();
   type.attributeIs(summary, "nhgConfig", box_.config);
   type.attributeIs(summary, "nhgEntryStatus", box_.entryStatus);
   type.call(summary, "processNexthopGroups");
   type.call(summary, "nhgPerTypeIs", std::vector<std::any>{Zam::fromText("vxlan"), U32{5}});
   type.call(summary, "nhgPerSizeDel", std::vector<std::any>{U32{3}});
   type.call(summary, "nhgUnprogrammedCountInc", std::vector<std::any>{U32{10}});
   auto const& value = std::any_cast<NexthopGroupSummaryHelper const&>(summary);
   EXPECT_EQ(*value.nhgPerType.find(NexthopGroupType::vxlan), 5U);
   EXPECT_TRUE(value.nhgPerSize.empty());
   EXPECT_EQ(Zam::valueToStrep(value),
             "Value('Kiv::NexthopGroupSummaryHelper', ** {'nhgConfig': Ptr('Routing::NexthopGroup::Config'), "
             "'nhgEntryStatus': Ptr('NexthopGroup::EntryStatus'), 'nhgHwStatus': None, 'routingHwStatus': None, "
             "'vrfName': 'default', 'nhgCount': 1, 'nhgUnprogrammedCount': 11, 'nhgPerType': None, "
             "'nhgPerSize': None})");
   auto const& mappingType = *registry.type("Kiv::NexthopGroupMappingHelper");
   std::any mapping = mappingType.construct();
   mappingType.attributeIs(mapping, "nhgConfig", box_.config);
   mappingType.attributeIs(mapping, "nhgEntryStatus", box_.entryStatus);
   testing_cliprint::CapturedFile file;
   mappingType.call(mapping, "render", std::vector<std::any>{static_cast<U32>(file.fd()), U32{2}});
   EXPECT_EQ(file.text(), "{\"nexthopGroups\":{\"7\":\"a\"}}\n");
   EXPECT_EQ(mappingType.toText(mapping),
             "Value('Kiv::NexthopGroupMappingHelper', ** {'nhgConfig': Ptr('Routing::NexthopGroup::Config'), "
             "'nhgEntryStatus': Ptr('NexthopGroup::EntryStatus'), 'nhgIdName': None})");
   mappingType.call(mapping, "nhgIdNameDelAll");
   EXPECT_EQ(std::any_cast<NexthopGroupMappingHelper>(mapping), box_.mapping());
   EXPECT_DEATH(Zam::strepToValue<NexthopGroupMappingHelper>("x"), "No String constructor for .*has collection");
}

}  // namespace

}  // namespace Kiv::Testing
