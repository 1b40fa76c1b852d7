#include "NexthopGroup/EntryStatus.h"

#include <gtest/gtest.h>

namespace {

TEST(NexthopGroupEntryStatus, NamesLeadToTheirLatestIdAndUnknownOnesToNone) {
   auto const status = Zam::makePtr<NexthopGroup::EntryStatus>();
   status->nexthopGroupIdIs("west", 2);
   status->nexthopGroupIdIs("east", 1);
   status->nexthopGroupIdIs("west", 3);
   EXPECT_EQ(status->nexthopGroupNameToId("west"), 3U);
   EXPECT_EQ(status->nexthopGroupNameToId("wes"), 0U);
   EXPECT_EQ(status->nexthopGroupNameToId(""), 0U);
   status->nexthopGroupIdIs("old west", 3);
   status->nexthopGroupIdDel("west");
   EXPECT_EQ(status->nexthopGroupNameToId("west"), 0U);

   std::vector<std::string> names;
   for (auto const& [name, id] : status->nexthopGroupId()) {
      names.push_back(name.bytes() + ' ' + std::to_string(id));
   }
   EXPECT_EQ(names, (std::vector<std::string>{"east 1", "old west 3"}));
}

}  // namespace
