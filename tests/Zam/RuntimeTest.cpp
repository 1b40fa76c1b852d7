#include "Zam/ActivityLock.h"
#include "Zam/String.h"
#include "Zam/Trace.h"
#include "support/Testing.h"

namespace {

using Short = Zam::BoundedString<3>;

TEST(BoundedString, HoldsAnyBytesUpToItsBound) {
   EXPECT_EQ(Short(std::string_view("a\0b", 3)).length(), 3U);
   EXPECT_THROW(Short("abcd"), Zam::RangeError);
   EXPECT_THROW(Short(std::string(4, 'x')), Zam::RangeError);
   Short text("ab");
   EXPECT_THROW(text += "cd", Zam::RangeError);
   EXPECT_EQ(text, Short("ab"));
   EXPECT_EQ(text += "c", Short("abc"));
   EXPECT_EQ(testsupport::complaintOf<Zam::RangeError>([] { Zam::BoundedString<100>(std::string(101, 'x')); }),
             "Zam::String::bytes > maxLength() not allowed");
}

TEST(Trace, SettingNamesSourcesAndLevels) {
   for (auto const& [setting, levels] :
        std::initializer_list<std::pair<char const*, U16>>{{"", 0},
                                                           {"Kiv/CliSupport", 0x3ff},
                                                           {"Kiv/CliSupport=089", 0x301},
                                                           {"*=1,Kiv/CliSupport=2", 0x6},
                                                           {"*", 0x3ff},
                                                           {"Other,Kiv/CliSupport=0", 1},
                                                           {"Kiv/CliSupport=", 0},
                                                           {"Kiv/CliSupport=x7:", 0x80},
                                                           {"Kiv/Cli,Kiv/CliSupport2,kiv/clisupport", 0},
                                                           {",,,", 0}}) {
      EXPECT_EQ(Zam::traceLevels(setting, "Kiv/CliSupport"), levels) << setting;
   }
}

TEST(ActivityLock, ScopedUnlockLetsAnotherActivityIn) {
   std::atomic<bool> ran = false;
   Zam::ScopedActivity const activity;
   std::thread other([&ran] {
      Zam::ScopedActivity const inner;
      ran = true;
   });
   {
      Zam::ScopedUnlock const unlock;
      EXPECT_FALSE(Zam::ActivityLock::held());
      other.join();
   }
   EXPECT_TRUE(ran);
   EXPECT_TRUE(Zam::ActivityLock::held());
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
