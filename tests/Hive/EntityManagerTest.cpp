#include "Hive/EntityManager.h"
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
   void stampIs(std::string_view text) const { std::ofstream(dir_ / "hive.json") << text; }

   testsupport::TempDir root_;
   fs::path dir_ = fs::path(root_ / "state") / "box";
};

}  // namespace

TEST_F(EntityManagerTest, needsADirectoryOfItsOwnVersion) {
   EXPECT_EQ(complaint(), dir_.string() + ": no such state directory");
   fs::create_directories(dir_);
   EXPECT_EQ(complaint(), dir_.string() + ": is not a state directory, it has no hive.json");
   stampIs("");
   EXPECT_EQ(complaint(), dir_.string() + ": is not a state directory, it has no hive.json");
   stampIs("{\"stateVersion\": 2}\n");
   EXPECT_EQ(complaint(), dir_.string() + ": state version 2, this program needs 1");
   stampIs("something else");
   EXPECT_EQ(complaint(), dir_.string() + ": state version 0, this program needs 1");
   fs::remove(dir_ / "hive.json");
   EntityManager::stateDirIs(dir_.string());
   EXPECT_EQ(complaint(), "");
   stampIs("{\"stateVersion\": 2}\n");
   EntityManager::stateDirIs(dir_.string());
   EXPECT_NE(complaint(), "") << "a stamp that is there is left alone";
   fs::remove_all(dir_);
   std::ofstream(dir_.string()) << "a file";
   EXPECT_EQ(complaint(), dir_.string() + ": is not a directory");
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

   manager->create<Vault::Fib6::RouteStatusWriter>("t/0", 1);
   manager->create<Vault::Fib::ForwardingStatusWriter>("t/1", 1);
   manager->create<Vault::Fib6::ForwardingStatusWriter>("t/2", 1);
   manager->create<Vault::FibGen::ForwardingStatusWriter>("t/3", 1);
   manager->create<Vault::Fib::UnprogrammedRouteStatusWriter>("t/4", 1);
   manager->create<Vault::KernelUnprogrammedRoute::UnprogrammedRouteWriter>("t/5", 1);
   std::string path = "t/0";
   for (char const* const type :
        {"Vault::Fib6::RouteStatus", "Vault::Fib::ForwardingStatus", "Vault::Fib6::ForwardingStatus",
         "Vault::FibGen::ForwardingStatus", "Vault::Fib::UnprogrammedRouteStatus",
         "Vault::KernelUnprogrammedRoute::UnprogrammedRoute"}) {
      auto const entity = manager->mountEntity(path, type);
      ASSERT_NE(entity, nullptr) << type;
      EXPECT_EQ(entity->fwkType(), type);
      ++path.back();
   }
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
