#include "FlexCounters/CounterTable.h"
#include "Hive/EntityManager.h"
#include "NexthopGroup/EntryStatus.h"
#include "NexthopGroup/NexthopGroupEntryToCounterKeyTable.h"
#include "Vault/ForwardingStatus.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/RouteStatus.h"
#include "Vault/UnprogrammedRouteStatus.h"
#include "support/Testing.h"

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
                                     {"something else", "state version 0, this program needs 1"},
                                     {"{\"stateVersion\": 2}\n", "state version 2, this program needs 1"}}) {
      std::ofstream(dir_ / "hive.json") << stamp;
      expect(said);
   }
   EntityManager::stateDirIs(dir_.string());
   expect("state version 2, this program needs 1");  // a stamp that is there is left alone
   fs::remove(dir_ / "hive.json");
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

   auto const expectMounted = [&]<class Writer>(std::type_identity<Writer>, std::string_view type) {
      manager->create<Writer>("t/0", 1);
      auto const entity = manager->mountEntity("t/0", type);
      ASSERT_NE(entity, nullptr) << type;
      EXPECT_EQ(entity->fwkType(), type);
   };
   using std::type_identity;
   expectMounted(type_identity<Vault::Fib6::RouteStatusWriter>(), "Vault::Fib6::RouteStatus");
   expectMounted(type_identity<Vault::Fib::ForwardingStatusWriter>(), "Vault::Fib::ForwardingStatus");
   expectMounted(type_identity<Vault::Fib6::ForwardingStatusWriter>(), "Vault::Fib6::ForwardingStatus");
   expectMounted(type_identity<Vault::FibGen::ForwardingStatusWriter>(), "Vault::FibGen::ForwardingStatus");
   expectMounted(type_identity<Vault::Fib::UnprogrammedRouteStatusWriter>(), "Vault::Fib::UnprogrammedRouteStatus");
   expectMounted(type_identity<Vault::KernelUnprogrammedRoute::UnprogrammedRouteWriter>(),
                 "Vault::KernelUnprogrammedRoute::UnprogrammedRoute");
   expectMounted(type_identity<NexthopGroup::EntryStatusWriter>(), "NexthopGroup::EntryStatus");
   expectMounted(type_identity<Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTableWriter>(),
                 "Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable");
   expectMounted(type_identity<FlexCounters::CounterTableWriter>(), "FlexCounters::CounterTable");
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
   EXPECT_THROW(manager.create<Vault::Fib::RouteStatusWriter>("a/b", 1), StateError);
   EXPECT_THROW(manager.create<Vault::Fib::RouteStatusWriter>("b", 1), Vault::MountError);
   EXPECT_THROW(manager.mount<Vault::Fib::RouteStatus>("b"), Vault::MountError);
}

}  // namespace Hive
