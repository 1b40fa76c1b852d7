#include "Zam/ActivityLock.h"
#include "Zam/Trace.h"
#include "support/Cases.h"
#include "support/Testing.h"

namespace {

TEST(Trace, SettingNamesSourcesAndLevels) {
   for (auto const& [setting, levels] : testsupport::casesOf("Zam/cases.txt", "levels of Kiv/CliSupport")) {
      EXPECT_EQ(Zam::traceLevels(setting, "Kiv/CliSupport"), std::stoul(levels, nullptr, 16)) << setting;
   }
}

TEST(ActivityLock, ScopedUnlockOfAThreadWithoutTheLockLeavesItAlone) {
   Zam::ScopedActivity const activity;
   bool heldThere = true;
   std::thread([&heldThere] {
      Zam::ScopedUnlock const unlock;
      heldThere = Zam::ActivityLock::held();
   }).join();
   EXPECT_FALSE(heldThere);
   EXPECT_TRUE(Zam::ActivityLock::held());
}

}  // namespace
