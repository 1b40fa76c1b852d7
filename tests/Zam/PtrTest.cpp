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
