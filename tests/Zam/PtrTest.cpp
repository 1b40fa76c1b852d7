#include "Zam/Ptr.h"
#include "support/Testing.h"

namespace {

struct Entity : Zam::PtrInterface {
   explicit Entity(int& alive) : alive_(alive) { ++alive_; }
   ~Entity() override { --alive_; }
   std::string_view fwkType() const noexcept override { return "Test::Entity"; }

 private:
   int& alive_;
};
struct Derived : Entity {
   using Entity::Entity;
};

TEST(Ptr, CountsEveryKindOfHandle) {
   int alive = 0;
   {
      auto const made = Zam::makePtr<Derived>(alive);
      Zam::Ptr<Entity const> constant = made;
      auto copy = constant;
      EXPECT_EQ(made->references(), 3U);
      auto const moved = std::move(copy);
      EXPECT_EQ(made->references(), 3U);
      constant = nullptr;
      EXPECT_EQ(made->references(), 2U);
      EXPECT_EQ(moved, made);
   }
   EXPECT_EQ(alive, 0);
}

TEST(Ptr, CountsAcrossThreadsInThreadSafeMode) {
   Zam::PtrInterface::threadSafeCountIs(true);
   int alive = 0;
   auto shared = Zam::makePtr<Entity>(alive);
   {
      std::vector<std::jthread> threads;
      for (int i = 0; i != 4; ++i) {
         threads.emplace_back([copy = shared] {
            for (int round = 0; round != 20000; ++round) {
               auto const local = copy;
            }
         });
      }
   }
   EXPECT_EQ(shared->references(), 1U);
   shared = nullptr;
   EXPECT_EQ(alive, 0);
   Zam::PtrInterface::threadSafeCountIs(false);
}

}  // namespace
