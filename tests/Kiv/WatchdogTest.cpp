#include "Kiv/common/Watchdog.h"

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

}  // namespace

}  // namespace Kiv
