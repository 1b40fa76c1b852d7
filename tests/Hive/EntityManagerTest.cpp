#include "FlexCounters/CounterTable.h"
#include "Hive/EntityManager.h"
#include "NexthopGroup/EntryStatus.h"
#include "NexthopGroup/NexthopGroupEntryToCounterKeyTable.h"
#include "Vault/ForwardingStatus.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/RouteStatus.h"
#include "Vault/UnprogrammedRouteStatus.h"
#include "support/Testing.h"

#include <sys/stat.h>

namespace Hive {

namespace {

namespace fs = std::filesystem;

class EntityManagerTest : public ::testing::Test {
 protected:
   std::string complaint() const {
      return testsupport::complaintOf<StateError>([this] { EntityManager{dir_.string()}; });
   }

   testsupport::TempDir root_;
   fs::path dir_ = fs::path(root_ / "state") / "box";
};

}  // namespace

TEST_F(EntityManagerTest, needsADirectoryOfItsOwnVersion) {
   auto const expect = [this](std::string const& said) {
      EXPECT_EQ(complaint(), said.empty() ? "" : dir_.string() + ": " + said);
   };
   expect("no such state directory");
   fs::create_directories(dir_);
   expect("is not a state directory, it has no hive.json");
   for (auto const& [stamp, said] : {std::pair("", "is not a state directory, it has no hive.json"),
                                     {"something else", "state version 0, this program needs 2"},
                                     {"{\"stateVersion\": 1}\n", "state version 1, this program needs 2"}}) {
      std::ofstream(dir_ / "hive.json") << stamp;
      expect(said);
   }
   EntityManager::stateDirIs(dir_.string());
   expect("state version 1, this program needs 2");  // a stamp that is there is left alone
   fs::remove(dir_ / "hive.json");
   ASSERT_EQ(::mkfifo((dir_ / "hive.json").c_str(), 0600), 0);
   expect("is not a state directory, it has no hive.json");
   EntityManager::stateDirIs(dir_.string());
   expect("");
   fs::remove_all(dir_);
   std::ofstream(dir_.string()) << "a file";
   expect("is not a directory");
   EXPECT_THROW(EntityManager::stateDirIs(dir_.string()), StateError);
}

TEST_F(EntityManagerTest, createsAndMountsTablesByPathAndName) {
   EntityManager::stateDirIs(dir_.string());
   auto const manager = Zam::makePtr<EntityManager>(dir_.string());
   EXPECT_EQ(manager->mount<Vault::Fib::RouteStatus>("fib/route/0"), nullptr);
   EXPECT_EQ(manager->mountEntity("fib/route/0", "Vault::Fib::RouteStatus"), nullptr);
   auto writer = manager->create<Vault::Fib::RouteStatusWriter>("fib/route/0", 10);
   writer->routeIs({.prefix = Lumen::Prefix::parse("10.0.0.0/8"), .metric = 7});
   auto const table = manager->mount<Vault::Fib::RouteStatus>("fib/route/0");
   ASSERT_NE(table, nullptr);
   EXPECT_EQ(table->route(Lumen::Prefix::parse("10.0.0.0/8"))->metric, 7U);
   EXPECT_THROW(manager->mount<Vault::Fib6::RouteStatus>("fib/route/0"), Vault::MountError);
   EXPECT_THROW(manager->mountEntity("fib/route/0", "Vault::Fib::ForwardingStatus"), Vault::MountError);
   writer = nullptr;
   EXPECT_EQ(manager->open<Vault::Fib::RouteStatusWriter>("fib/route/0")->routes(), 1U);
   EXPECT_THROW(manager->open<Vault::Fib::RouteStatusWriter>("fib/route/1"), Vault::MountError);

   EXPECT_EQ(manager->mountEntity("fib/route/0", "Vault::Fib::RouteStatus")->fwkType(), "Vault::Fib::RouteStatus");
   // Each is mounted by its own name, and by no other.
   auto const make = [&]<class Writer>(std::type_identity<Writer>) {
      auto const any = Zam::makePtr<Writer>(root_ / "any", Vault::TableFile::Sizes{1});
      manager->create<Writer>("t/" + std::string(any->fwkType()), 1);
   };
   auto const mountable = [&](auto... writers) {
      (make(writers), ...);
      for (fs::directory_entry const& made : fs::directory_iterator(dir_ / "t")) {
         auto const name = made.path().filename().string();
         for (fs::directory_entry const& other : fs::directory_iterator(dir_ / "t")) {
            auto type = other.path().filename().string();
            type.resize(type.size() - std::string_view("Writer").size());
            auto const said = testsupport::complaintOf<Vault::MountError>(
                [&] { EXPECT_EQ(manager->mountEntity("t/" + name, type)->fwkType(), type); });
            EXPECT_EQ(said.empty(), type + "Writer" == name) << type << " in " << name;
         }
      }
   };
   mountable(std::type_identity<Vault::Fib::RouteStatusWriter>(), std::type_identity<Vault::Fib6::RouteStatusWriter>(),
             std::type_identity<Vault::Fib::ForwardingStatusWriter>(),
             std::type_identity<Vault::Fib6::ForwardingStatusWriter>(),
             std::type_identity<Vault::FibGen::ForwardingStatusWriter>(),
             std::type_identity<Vault::Fib::UnprogrammedRouteStatusWriter>(),
             std::type_identity<Vault::KernelUnprogrammedRoute::UnprogrammedRouteWriter>(),
             std::type_identity<NexthopGroup::EntryStatusWriter>(),
             std::type_identity<Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTableWriter>(),
             std::type_identity<FlexCounters::CounterTableWriter>());
   EXPECT_THROW(manager->mountEntity("t/0", "Vault::Fib::Nothing"), StateError);
}

TEST_F(EntityManagerTest, pathsStayBelowTheDirectory) {
   EntityManager::stateDirIs(dir_.string());
   EntityManager const manager(dir_.string());
   using namespace std::string_view_literals;
   for (std::string_view const path : {""sv, "/"sv, "/etc/passwd"sv, ".."sv, "../other"sv, "a/../../other"sv, "a/.."sv,
                                       "."sv, "a//b"sv, "a/"sv, "./a"sv, "a\0b"sv}) {
      EXPECT_THROW(manager.mount<Vault::Fib::RouteStatus>(path), StateError) << path;
      EXPECT_THROW(manager.create<Vault::Fib::RouteStatusWriter>(path, 1), StateError) << path;
   }
   for (std::string_view const path : {"a", "b/c", "..a", "a..", "b/...", ".a"}) {
      EXPECT_NO_THROW(manager.create<Vault::Fib::RouteStatusWriter>(path, 1)) << path;
      EXPECT_TRUE(manager.exists(path));
   }
   // A file stands where a directory is to be, and a directory where a file is to be.
   EXPECT_THROW(manager.create<Vault::Fib::RouteStatusWriter>("a/b", 1), Vault::MountError);
   EXPECT_THROW(manager.create<Vault::Fib::RouteStatusWriter>("b", 1), Vault::MountError);
   EXPECT_THROW(manager.mount<Vault::Fib::RouteStatus>("b"), Vault::MountError);
}

// What is not there at all is no table; what is there and cannot be read is never mistaken for it.
TEST_F(EntityManagerTest, aTableThatIsLostOrMisplacedIsSaid) {
   using Table = Vault::Fib::RouteStatus;
   using Writer = Vault::Fib::RouteStatusWriter;
   EntityManager::stateDirIs(dir_.string());
   EntityManager::stateDirIs(root_ / "other");
   EntityManager const manager(dir_.string());
   EntityManager const other(root_ / "other");
   EXPECT_NE(manager.load(), other.load());
   manager.create<Writer>("t/0", 1);
   manager.create<Writer>("t/1", 1);
   other.create<Writer>("t/1", 1);
   auto const said = [&](auto&& act) {
      std::string const complaint = testsupport::complaintOf<Vault::MountError>(act);
      return complaint.substr(std::min(complaint.size(), manager.stateDir().size() + 1));
   };
   auto const mounted = [&](std::string_view path) { return said([&] { manager.mount<Table>(path); }); };
   EXPECT_EQ(mounted("t/0"), "");
   EXPECT_EQ(manager.mount<Table>("t/2"), nullptr);
   EXPECT_EQ(said([&] { manager.mountRequired<Table>("t/2"); }), "t/2: cannot be opened: No such file or directory");
   fs::create_symlink("nowhere", dir_ / "t/3");
   EXPECT_EQ(mounted("t/3"), "t/3: cannot be opened: No such file or directory");
   ASSERT_EQ(::mkfifo((dir_ / "t/4").c_str(), 0600), 0);
   EXPECT_EQ(mounted("t/4"), "t/4: is not a file");
   EXPECT_EQ(mounted("t/0/5"), "t/0/5: cannot be opened: Not a directory");
   fs::copy_file(dir_ / "t/1", dir_ / "t/0", fs::copy_options::overwrite_existing);
   EXPECT_EQ(mounted("t/0"), "t/0: is another table than the one of this place");
   fs::copy_file(root_ / "other/t/1", dir_ / "t/1", fs::copy_options::overwrite_existing);
   EXPECT_EQ(mounted("t/1"), "t/1: is of another load than its state");
}

TEST_F(EntityManagerTest, readsOneDirectoryWhateverTakesItsPlace) {
   using Writer = Vault::Fib::RouteStatusWriter;
   EntityManager::stateDirIs(dir_.string());
   EntityManager const before(dir_.string());
   before.create<Writer>("t/0", 1)->routeIs({.prefix = Lumen::Prefix::parse("10.0.0.0/8")});
   fs::rename(dir_, root_ / "moved");
   EntityManager::stateDirIs(dir_.string());
   EXPECT_EQ(EntityManager(dir_.string()).mount<Vault::Fib::RouteStatus>("t/0"), nullptr);
   EXPECT_EQ(before.mount<Vault::Fib::RouteStatus>("t/0")->routes(), 1U);
   before.replace<Writer>("t/0", {1}, [](Writer&) {});
   EXPECT_EQ(before.mount<Vault::Fib::RouteStatus>("t/0")->routes(), 0U);
}

}  // namespace Hive
