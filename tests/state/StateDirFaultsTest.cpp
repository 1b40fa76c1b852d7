#include "state/ConfigFile.h"
#include "state/Inputs.h"
#include "state/Snapshot.h"
#include "state/StateDir.h"
#include "support/Testing.h"

#include <sys/stat.h>
#include <sys/wait.h>

// What others do to a state directory, or the machine, while it is written and read.
namespace state {
namespace {

namespace fs = std::filesystem;

class StateDirFaults : public testing::Test {
 protected:
   static mode_t modeOf(fs::path const& path) {
      struct stat info {};
      EXPECT_EQ(::lstat(path.c_str(), &info), 0) << path;
      return info.st_mode & 07777;
   }
   static int shell(std::string const& script) { return WEXITSTATUS(std::system(("(" + script + ") 2>&1").c_str())); }

   // Two interfaces and as many routes, all of one metric, by which states are told apart.
   static State stateOf(U32 metric) {
      std::string const name = "e" + std::to_string(metric);
      std::string text = R"({"interfaces": {")" + name + R"(": {}}, "vrfs": {"default": {"ipv4Routes": [)";
      for (int i = 0; i < 20; ++i) {
         text += std::string(i == 0 ? "" : ",") + R"({"prefix": "10.)" + std::to_string(i) +
                 R"(.0.0/16", "type": "kernel", "metric": )" + std::to_string(metric) +
                 R"(, "vias": [{"interface": ")" + name + "\"}]}";
      }
      return parseSnapshot("state", text + "]}}}");
   }

   testsupport::TempDir dir_;
   std::string const place_ = dir_ / "state";
};

// What a reader of many VRFs mounts later can be gone by then, which is no damage.
TEST_F(StateDirFaults, WhatALoadTookAwayIsToldAsSuch) {
   State state = stateOf(1);
   for (U32 id = 1; id < 80; ++id) {
      state.vrfs.push_back({.id = id, .name = "v" + std::to_string(id)});
   }
   writeStateDir(state, place_);
   Inputs inputs = mountStateDir(place_);
   writeStateDir(state, place_);
   EXPECT_NE(inputs.routes(0), nullptr);
   EXPECT_EQ(testsupport::complaintOf<Hive::StateError>([&] { inputs.routes(79); }),
             place_ + ": another state was loaded while this one was read");
}

TEST_F(StateDirFaults, LeftoversGoAndNothingElse) {
   fs::create_directories(dir_ / ".state.new.1/below");
   fs::create_directory(dir_ / ".state.newer");
   fs::create_directory_symlink(dir_ / ".state.newer", dir_ / ".state.new.2");
   std::ofstream(dir_ / ".state.newer/kept") << "text";
   writeStateDir(stateOf(1), place_);
   EXPECT_FALSE(fs::exists(dir_ / ".state.new.1"));
   fs::create_directory(dir_ / ".state.new.3");
   for (std::string const name : {"state/config.json.new.1", "state/fib/route/0.new.2"}) {
      std::ofstream(dir_ / name) << "half";
   }
   ConfigChange(place_).commit();
   EXPECT_FALSE(fs::exists(dir_ / "state/config.json.new.1"));
   EXPECT_EQ(removeLeftovers(place_), 2U);
   EXPECT_FALSE(fs::exists(dir_ / "state/fib/route/0.new.2"));
   EXPECT_TRUE(fs::exists(dir_ / ".state.newer/kept"));
   EXPECT_TRUE(fs::is_symlink(dir_ / ".state.new.2"));
}

TEST_F(StateDirFaults, ConfigurationKeepsItsModeAndIsReadAgainBeforeItIsWritten) {
   writeStateDir(stateOf(1), place_);
   fs::path const file = fs::path(place_) / configFile;
   EXPECT_EQ(modeOf(file) & 0022U, 0U);
   ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
   Routing::RouteKey const key{{}, Lumen::IpGenPrefix::parse("10.0.0.0/8"), 1};
   ConfigChange(place_).commit();
   EXPECT_EQ(modeOf(file), 0640U);
   {
      ConfigChange change(place_);
      change.state().vrfs.front().staticRoutes.ip->routeIs(key, Routing::RouteType::forward);  // without vias
      EXPECT_THROW(change.commit(), JsonError);
   }
   EXPECT_TRUE(readStateDir(place_).vrfs.front().staticRoutes.isEmpty());
   State impossible = stateOf(1);
   impossible.vrfs.front().staticRoutes.ip->routeIs(key, Routing::RouteType::forward);
   EXPECT_THROW(writeStateDir(impossible, place_), JsonError);
}

TEST_F(StateDirFaults, ManyVrfsNeedFewFiles) {
   State state = stateOf(1);
   for (VrfId id = 1; id < 600; ++id) {
      state.vrfs.push_back({.id = id, .name = std::string_view("v" + std::to_string(id))});
   }
   std::ofstream(dir_ / "vrfs.json") << snapshotText(state);
   EXPECT_EQ(shell("ulimit -n 256; " KIV_PROGRAM " --snapshot " + (dir_ / "vrfs.json") +
                   " show ip route vrf all | grep -c ^VRF: | grep -qx 600"),
             0);
}

// Clears, loads and changes wait for each other.
TEST_F(StateDirFaults, ClearingWaitsForTheLock) {
   writeStateDir(stateOf(1), place_);
   std::string const clear = "timeout 1 " KIV_PROGRAM " --state " + place_ + " clear nexthop-group counters >/dev/null";
   {
      StateDirLock const lock(place_);
      EXPECT_EQ(shell(clear), 124);
   }
   EXPECT_EQ(shell(clear), 0);
}

// A FEC table has room for what is loaded, however many vias each of its FECs has.
TEST_F(StateDirFaults, TablesAreAsLargeAsTheStateNeeds) {
   State state = stateOf(1);
   state.fecs.clear();
   for (U64 id = 1; id <= 40; ++id) {
      Vault::Fib::Fec& fec = state.fecs.emplace_back();
      fec.fecId = Vault::Fib::FecId::of(0, id);
      fec.primaryVias = Vault::Fib::maxVias;
      fec.vias.resize(Vault::Fib::maxVias, {.hop = Lumen::IpGenAddr(Lumen::IpAddr(static_cast<U32>(id)))});
   }
   EXPECT_NO_THROW(writeStateDir(state, place_));
   EXPECT_EQ(mountStateDir(place_).forwardingStatus->fecs(), 40U);
}

}  // namespace
}  // namespace state
