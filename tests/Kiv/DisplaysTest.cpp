#include "NexthopGroupTesting.h"
#include "Zam/ActivityLock.h"
#include "tests/Kiv/config/ConfigTesting.h"

#include <fcntl.h>
#include <unistd.h>

// What all operations over many entries have in common that are not a sorter's: how their output ends early, and that
// others may change what they read whenever they let them run.
namespace Kiv::Testing {

namespace {

constexpr U32 entries = 9000;

class DisplaysTest : public ::testing::Test {
 protected:
   DisplaysTest() {
      for (U32 i = 0; i < entries; ++i) {
         box_.groupIs(nameOf(i), i + 1, 2);
         list_->routeIs(keyOf(i), RouteType::forward)->viaIs(through("1.1.1.1", "Ethernet1"), 0);
         attached_->routeIs(hostOf(i), {{}, 0, true});
         cache_->routeIs({{}, keyOf(i).prefix, 0}, {});
      }
   }
   ~DisplaysTest() override { cliprint::resetInterrupted(); }

   static std::string nameOf(U32 i) { return "g" + std::to_string(i); }
   static Routing::RouteKey keyOf(U32 i) { return {{}, Lumen::Prefix(Lumen::IpAddr(0x0a000000 + i * 256), 24), 1}; }
   static Routing::AttachedRouteKey hostOf(U32 i) {
      return {{}, Lumen::IntfId::named("Ethernet1"), Lumen::IpAddr(0x0a000000 + i)};
   }
   StaticRoutesRibCommon dumpTo(U32 fd) const {
      StaticRoutesRibCommon dump;
      dump.fd = fd;
      dump.fmt = 2;
      dump.routeInputConf.insert(Zam::makePtr<Routing::RouteInput>(list_));
      return dump;
   }
   std::string summaryText() const {
      RouteSummary summary;
      summary.attachedRtStatus = attached_;
      summary.routeCacheConfig = cache_;
      summary.loadAttachedRoutes();
      summary.loadRouteCacheRoutes();
      return std::to_string(summary.totalNumRoutes);
   }

   // The operations that print, with the error that ended each.
   struct Display {
      char const* name;
      std::function<int(U32 fd)> print;
   };
   std::vector<Display> displays() const {
      auto const render = [](auto display, U32 fd) { return display.render(fd, 2) ? 0 : errno; };
      return {{"summary", [=, this](U32 fd) { return render(box_.summary(), fd); }},
              {"mapping", [=, this](U32 fd) { return render(box_.mapping(), fd); }},
              {"detail", [=, this](U32 fd) { return render(box_.detail(), fd); }},
              {"dump", [this](U32 fd) { return dumpTo(fd).dump({}); }}};
   }

   // Of even entries, which stay, and of what others take away and bring.
   void change(U32 i) {
      U32 const odd = i % (entries / 2) * 2 + 1;
      box_.config->nexthopGroupDel(nameOf(odd));
      box_.config->nexthopGroupIs(
          Zam::makePtr<Routing::NexthopGroup::NexthopGroupConfigEntry>(nameOf(entries + i), NexthopGroupType::ip));
      list_->routeDel(keyOf(odd));
      list_->routeIs(keyOf(entries + i), RouteType::drop);
      attached_->routeDel(hostOf(odd));
      attached_->routeIs(hostOf(entries + i), {{}, 0, true});
      cache_->routeDel({{}, keyOf(odd).prefix, 0});
      cache_->routeIs({{}, keyOf(entries + i).prefix, 0}, {});
   }
   // What `act` does while another thread changes everything each time that it is let in.
   template <class Act>
   void whileOthersChange(char const* name, Act const& act) {
      std::atomic<bool> over = false;
      std::atomic<U32> turns = 0;
      std::thread other;
      {
         Zam::ScopedActivity const activity;
         other = std::thread([&] {
            for (U32 i = 0; !over;
                 std::this_thread::sleep_for(std::chrono::microseconds(100))) {  // a mutex is not fair
               Zam::ScopedActivity const theirs;
               for (U32 const end = i + 200; i < end; ++i) {
                  change(i);
               }
               ++turns;
            }
         });
         act();
         EXPECT_TRUE(Zam::ActivityLock::held()) << name;
         EXPECT_GT(turns, 0U) << name;
         over = true;
      }
      other.join();
   }

   GroupBox box_{entries + 1};
   Zam::Ptr<Routing::RouteList> const list_ = routeList();
   Zam::Ptr<Routing::AttachedRouteStatus> const attached_ = Zam::makePtr<Routing::AttachedRouteStatus>();
   Zam::Ptr<Routing::Rib::RouteConfig> const cache_ = Zam::makePtr<Routing::Rib::RouteConfig>();
};

TEST_F(DisplaysTest, endEarlyWithAValue) {
   int pipe[2];
   ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
   ::close(pipe[0]);
   int const full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
   for (auto const& [name, print] : displays()) {
      EXPECT_EQ(print(static_cast<U32>(pipe[1])), EPIPE) << name;
      EXPECT_EQ(print(static_cast<U32>(full)), ENOSPC) << name;
      testing_cliprint::CapturedFile file;
      cliprint::interruptedIs(true);
      ::testing::internal::CaptureStdout();
      EXPECT_EQ(print(static_cast<U32>(file.fd())), EINTR) << name;
      EXPECT_EQ(::testing::internal::GetCapturedStdout(),
                std::string("exiting ") + cliprint::SigIntException().what() + "\n");
      EXPECT_EQ(file.text(), "") << name;
      EXPECT_EQ(print(static_cast<U32>(file.fd())), 0) << "the interrupt is over";
      EXPECT_TRUE(testsupport::StrictJson::parse(file.text())) << name;
   }
   ::close(pipe[1]);
   ::close(full);
}

TEST_F(DisplaysTest, othersChangeWhatIsShown) {
   for (auto const& display : displays()) {
      testing_cliprint::CapturedFile file;
      whileOthersChange(display.name,
                        [&] { EXPECT_EQ(display.print(static_cast<U32>(file.fd())), 0) << display.name; });
      auto const text = file.text();
      EXPECT_TRUE(testsupport::StrictJson::parse(text)) << display.name;
      bool const namesGroups = std::string_view(display.name) != "summary" && std::string_view(display.name) != "dump";
      std::set<std::string> quoted;
      for (auto at = text.find('"'); at != std::string::npos; at = text.find('"', at + 1)) {
         quoted.insert(text.substr(at + 1, text.find('"', at + 1) - at - 1));
      }
      for (U32 i = 0; namesGroups && i < entries; i += 2) {
         ASSERT_TRUE(quoted.contains(nameOf(i))) << display.name << " without " << i;
      }
   }
   whileOthersChange("route summary", [&] { EXPECT_GT(std::stoul(summaryText()), entries); });
   // What is saved is what the list held at first.
   auto const save = [this] { return StaticRoutesCliSaver().save(list_, false, "r ", {}).bytes(); };
   auto const before = save();
   std::string during;
   whileOthersChange("saver", [&] { during = save(); });
   EXPECT_TRUE(during == before && before.size() > entries);
}

}  // namespace

}  // namespace Kiv::Testing
