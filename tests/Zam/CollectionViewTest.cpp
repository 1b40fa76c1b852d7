#include "Zam/CollectionView.h"
#include "Zam/FlatMap.h"
#include "Zam/HashMap.h"
#include "Zam/OrderedMap.h"
#include "support/Testing.h"

#include <unordered_set>

namespace {

using Zam::CollectionView;

// What a walk gives of a collection whose keys are numbers.
std::vector<U32> walked(CollectionView const& view) {
   std::vector<U32> keys;
   auto walk = view.walk();
   while (auto const element = walk.next()) {
      keys.push_back(std::any_cast<U32>(element->key));
   }
   return keys;
}

void add(auto& collection, U32 key) {
   if constexpr (Zam::ListCollection<std::remove_cvref_t<decltype(collection)>>) {
      collection.push_back(key);
   } else if constexpr (requires { collection.insert(key); }) {
      collection.insert(key);
   } else {
      collection.insertOrReplace(key, key);
   }
}

template <class M>
class Collections : public testing::Test {
 protected:
   static M filled(U32 count) {
      M collection;
      for (U32 key = 0; key < count; ++key) {
         add(collection, Zam::ListCollection<M> ? key : 2 * (key * 7 % count));
      }
      return collection;
   }
};
using Types = testing::Types<Zam::OrderedMap<U32, U32>, Zam::FlatMap<U32, U32>, std::set<U32>, std::vector<U32>,
                             Zam::HashMap<U32, U32>, std::unordered_set<U32>>;
TYPED_TEST_SUITE(Collections, Types);

TYPED_TEST(Collections, AreSeenWholeAndByKey) {
   for (U32 const count : {0U, 1U, 50U, 3000U}) {
      auto const collection = this->filled(count);
      auto const view = CollectionView::of(collection, nullptr);
      EXPECT_EQ(view.size(), count);
      auto const keys = walked(view);
      EXPECT_EQ(std::set<U32>(keys.begin(), keys.end()).size(), count);
      for (U32 const key : keys) {
         ASSERT_EQ(std::any_cast<U32>(view.find(key)), key);
      }
      EXPECT_FALSE(view.find(2 * count + 1).has_value());
      EXPECT_THROW(view.find("x"), Zam::TypeError);
      EXPECT_EQ(view.template as<TypeParam>(), &collection);
   }
}

// Elements come and go between the steps: what stays throughout comes once, in order, or the walk says that it is over.
TYPED_TEST(Collections, WalkedWhileTheyChange) {
   std::mt19937 random(3);
   for (int round = 0; round != 200; ++round) {
      auto collection = this->filled(60);
      std::set<U32> untouched;
      for (U32 const key : walked(CollectionView::of(collection, nullptr))) {
         untouched.insert(key);
      }
      std::vector<U32> seen;
      bool refused = false;
      auto walk = CollectionView::of(collection, nullptr).walk();
      try {
         while (auto const element = walk.next()) {
            seen.push_back(std::any_cast<U32>(element->key));
            if (random() % 4 == 0 && seen.size() < 300) {
               auto const key = static_cast<U32>(random() % 130);
               untouched.erase(key);
               if constexpr (Zam::ListCollection<TypeParam>) {
                  collection.push_back(key);
               } else if (random() % 2 == 0) {
                  collection.erase(key);
               } else {
                  add(collection, key);
               }
            }
         }
      } catch (Zam::TypeError const&) {
         refused = true;
      }
      constexpr bool hasOrder = Zam::ListCollection<TypeParam> || Zam::InKeyOrder<TypeParam>;
      ASSERT_FALSE(refused && hasOrder);
      if (!refused) {
         ASSERT_TRUE(!hasOrder || std::ranges::is_sorted(seen));
         std::set<U32> const once(seen.begin(), seen.end());
         ASSERT_EQ(once.size(), seen.size());
         ASSERT_TRUE(std::ranges::includes(once, untouched)) << round;
      }
   }
}

TEST(CollectionView, HoldsTheEntityThatItWasReadFrom) {
   struct Entity : Zam::PtrInterface {
      std::string_view fwkType() const noexcept override { return "Test::Entity"; }
      std::vector<U32> numbers{1, 2, 3};
   };
   auto entity = Zam::makePtr<Entity>();
   auto const& numbers = entity->numbers;
   auto walk = CollectionView::of(numbers, Zam::Ptr<Zam::PtrInterface const>(entity)).walk();
   entity = nullptr;
   EXPECT_EQ(std::any_cast<U32>(walk.next()->value), 1U);
   EXPECT_EQ(walked(CollectionView::owning(std::set<U32>{3, 1})), (std::vector<U32>{1, 3}));
}

}  // namespace
