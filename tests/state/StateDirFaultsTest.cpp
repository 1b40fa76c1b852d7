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

TEST_F(StateDirFaults, ReadersFindOneLoadOrAnother) {
   writeStateDir(stateOf(1), place_);
   std::atomic<bool> done = false;
   std::thread loader([&] {
      for (U32 i = 0; i < 60; ++i) {
         writeStateDir(stateOf(i % 2 + 1), place_);
      }
      done = true;
   });
   do {
      Inputs inputs = mountStateDir(place_);
      U32 const of = inputs.intfStatus("e1") != nullptr ? 1 : 2;
      U32 routes = 0;
      inputs.routes(0)->walk([&](Vault::Fib::Route const& route) {
         EXPECT_EQ(route.metric, of);
         Vault::Fib::Fec fec;
         ASSERT_TRUE(inputs.forwardingStatus->fec(route.fecId, fec));
         EXPECT_EQ(fec.vias.at(0).intfId.name(), "e" + std::to_string(of));
         ++routes;
      });
      EXPECT_EQ(routes, 20U);
   } while (!done);
   loader.join();
   EXPECT_EQ(std::distance(fs::directory_iterator(fs::path(place_).parent_path()), {}), 1) << "nothing is left behind";
}

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

TEST_F(StateDirFaults, AFileThatIsNoneIsRefused) {
   for (char const* const name : {entitiesFile, configFile}) {
      writeStateDir(stateOf(1), place_);
      fs::path const file = fs::path(place_) / name;
      fs::remove(file);
      ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
      EXPECT_EQ(testsupport::complaintOf<JsonError>([&] { mountStateDir(place_); }), file.string() + ": is not a file");
      fs::remove(file);
      fs::create_symlink("/etc/hostname", file);
      EXPECT_THROW(mountStateDir(place_), JsonError);
   }
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

// Whatever every state has is missed when it is gone, leads nowhere or is nothing to be read, without waiting for it.
TEST_F(StateDirFaults, WhatEveryStateHasIsMissed) {
   U32 tables = 0;
   writeStateDir(stateOf(1), place_);
   fs::path const kept = dir_ / "kept";
   fs::copy(place_, kept, fs::copy_options::recursive);
   for (auto const& entry : fs::recursive_directory_iterator(kept)) {
      fs::path const file = fs::path(place_) / entry.path().lexically_relative(kept);
      bool const isRequired =
          file.native().find("/fib") != std::string::npos || file.parent_path().filename() == "kernel";
      if (!entry.is_regular_file() || !isRequired) {
         continue;
      }
      ++tables;
      for (char const* const fault : {"rm $f", "ln -sf /nowhere $f", "rm $f; mkfifo $f", "rm $f; mkdir $f"}) {
         writeStateDir(stateOf(1), place_);
         ASSERT_EQ(shell("f=" + file.string() + "; " + fault), 0);
         auto const mountAll = [&] {
            Inputs inputs = mountStateDir(place_);
            inputs.routes(0);
            inputs.routes6(0);
         };
         EXPECT_NE(testsupport::complaintOf<Vault::MountError>(mountAll).find(file.string()), std::string::npos)
             << fault;
         fs::remove(file);
      }
   }
   EXPECT_EQ(tables, 7U);
}

TEST_F(StateDirFaults, AStateWithALivingWriterIsNotReplaced) {
   writeStateDir(stateOf(1), place_);
   {
      Hive::EntityManager const manager(place_);
      auto const writer = manager.open<Vault::Fib::RouteStatusWriter>("fib/route/0");
      EXPECT_EQ(testsupport::complaintOf<Hive::StateError>([&] { writeStateDir(stateOf(2), place_); }),
                place_ + "/fib/route/0: is being written by another process");
   }
   EXPECT_NO_THROW(writeStateDir(stateOf(2), place_));
}

// Nothing of it stays behind, and what others may do with it is what they should.
TEST_F(StateDirFaults, LoadsEndCleanly) {
   std::ofstream(dir_ / "large.json") << snapshotText(stateOf(1));
   std::string const load = "cd " + (dir_ / "") + "; " KIV_PROGRAM " load ";
   EXPECT_EQ(shell("ulimit -f 4; " + load + "large.json --state s >/dev/null"), 1);
   EXPECT_EQ(shell(load + "/dev/zero --state s & sleep 0.3; kill -TERM $!; wait $!"), 143);
   EXPECT_EQ(shell("cd " + (dir_ / "") + "; [ \"$(ls -A)\" = large.json ]"), 0);
   EXPECT_EQ(shell("umask 0; " + load + "large.json --state s && [ -z \"$(find s -perm /022)\" ]"), 0);
   fs::create_directory(dir_ / ".s.new.1");
   EXPECT_EQ(shell(KIV_PROGRAM " gc " + (dir_ / "s")), 0);
   EXPECT_FALSE(fs::exists(dir_ / ".s.new.1"));
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

TEST_F(StateDirFaults, InputIsReadBeforeTheLockIsTaken) {
   writeStateDir(stateOf(1), place_);
   std::string const kiv = KIV_PROGRAM " --state " + place_;
   EXPECT_EQ(
       shell("sleep 3 | " + kiv + " configure /dev/stdin & sleep 0.3; timeout 1 " + kiv + " ip route 10.0.0.0/8 Null0"),
       0);
}

TEST_F(StateDirFaults, AFullDiskIsSeenBeforeAnythingIsReplaced) {
   std::ofstream(dir_ / "large.json") << snapshotText(stateOf(1));
   std::ofstream(dir_ / "small.json") << "{}";
   std::string const script = "cd " + (dir_ / "") + " && mkdir t && mount -t tmpfs -o size=150k none t || exit 77; " +
                              "head -c 140000 /dev/zero >t/filling; " KIV_PROGRAM
                              " load large.json --state t/s; "
                              "s=$?; ls -A t >left; umount t; exit $s";
   int const status = shell("unshare -m bash -c '" + script + "' >" + (dir_ / "out") + " 2>&1");
   if (status == 77 || !fs::exists(dir_ / "left")) {
      GTEST_SKIP() << "no privilege to mount";
   }
   EXPECT_EQ(status, 1);
   std::ifstream out(dir_ / "out");
   EXPECT_EQ(std::string(std::istreambuf_iterator<char>(out), {}),
             "kiv: " + (dir_ / "t/s/fib/route/0") + ": cannot be written: No space left on device\n");
   std::ifstream left(dir_ / "left");
   EXPECT_EQ(std::string(std::istreambuf_iterator<char>(left), {}), "filling\n");
}

TEST_F(StateDirFaults, InputWithoutEndHasOne) {
   ::setenv("KIV_MAX_INPUT", "100000", 1);
   EXPECT_EQ(testsupport::complaintOf<JsonError>([] { readSnapshot("/dev/zero"); }),
             "/dev/zero: has more than 100000 bytes, which KIV_MAX_INPUT allows");
   ::unsetenv("KIV_MAX_INPUT");
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
