#include "Kiv/routedisplay/Watchdog.h"

#include "Zam/ActivityLock.h"
#include "support/Testing.h"

namespace Kiv {

namespace {

TEST(WatchdogTest, every2001stCallStartsOver) {
   U32 count = 0;
   for (U32 call = 1; call <= 2000; ++call) {
      allowWatchdog(count);
      ASSERT_EQ(count, call);
   }
   allowWatchdog(count);
   EXPECT_EQ(count, 0U);
   EXPECT_FALSE(Zam::ActivityLock::held());
}

TEST(WatchdogTest, letsAnotherActivityInAndComesBackLocked) {
   std::atomic<bool> ran = false;
   Zam::ScopedActivity const activity;
   std::thread other([&ran] {
      Zam::ScopedActivity const theirs;
      ran = true;
   });
   U32 count = 0;
   for (int yields = 0; !ran && yields < 5000; ++yields) {
      count = 2000;
      allowWatchdog(count);
   }
   EXPECT_TRUE(ran);
   EXPECT_TRUE(Zam::ActivityLock::held());
   other.join();
}

}  // namespace

}  // namespace Kiv
