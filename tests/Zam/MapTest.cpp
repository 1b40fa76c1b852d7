#include "Zam/FlatMap.h"
#include "Zam/HashMap.h"
#include "Zam/OrderedMap.h"
#include "support/Testing.h"

namespace {

using Text = std::string;
using Ordered = Zam::OrderedMap<U32, Text>;

// Many keys share a home, so runs of slots are long, wrap around and close gaps across each other.
struct BadHash {
   std::size_t operator()(U32 key) const noexcept { return key % 300; }
};

// Keys that are sorted by a word first, which they share by fours.
struct WordKey {
   WordKey(U32 key) : value(key) {}  // NOLINT(google-explicit-constructor): a number for the tests of all maps
   operator U32() const { return value; }
   auto operator<=>(WordKey const&) const = default;
   U64 sortWord() const noexcept { return U64{value / 4} << 20U; }
   U32 value;
};

template <class Map>
class AnyMap : public testing::Test {
 protected:
   static void expectSame(Map const& map, std::map<U32, Text> const& reference) {
      std::vector<U32> keys;
      std::map<U32, Text> entries;
      for (auto const& [key, value] : map) {
         keys.push_back(key);
         entries.emplace(key, value);
      }
      if constexpr (requires { map.lowerBound(0); }) {
         ASSERT_TRUE(std::ranges::is_sorted(keys));
      }
      ASSERT_TRUE(map.size() == reference.size() && keys.size() == reference.size());
      ASSERT_EQ(entries, reference);
   }
};
using Maps = testing::Types<Ordered, Zam::OrderedMap<WordKey, Text>, Zam::FlatMap<U32, Text>, Zam::HashMap<U32, Text>,
                            Zam::HashMap<U32, Text, BadHash>>;
TYPED_TEST_SUITE(AnyMap, Maps);

// Phases that mostly fill and phases that mostly empty, some without a look-up between, over key ranges that make few
// and many collisions.
TYPED_TEST(AnyMap, BehavesAsTheReferenceUnderRandomOperations) {
   std::mt19937 random(11);
   for (U32 const range : {5U, 100U, 3000U, 20000U}) {
      TypeParam map;
      std::map<U32, Text> reference;
      for (U32 step = 0; step != 20000; ++step) {
         U32 const key = static_cast<U32>(random()) % range;
         if (bool const onlyFills = step % 5000 < 2000; onlyFills || random() % 10 < (step / 5000 % 2 == 0 ? 7 : 2)) {
            map.insertOrReplace(key, std::to_string(step));
            reference.insert_or_assign(key, std::to_string(step));
         } else {
            ASSERT_EQ(map.erase(key), reference.erase(key) != 0) << key;
            U32 const other = static_cast<U32>(random()) % range;
            auto const* const found = map.find(other);
            auto const expected = reference.find(other);
            ASSERT_EQ(found != nullptr, expected != reference.end()) << other;
            ASSERT_TRUE(found == nullptr || *found == expected->second) << other;
            if constexpr (requires { map.lowerBound(other); }) {
               auto const next = reference.lower_bound(other);
               auto const bound = map.lowerBound(other);
               ASSERT_TRUE(next == reference.end() ? bound == map.end() : U32(bound->key) == next->first) << other;
            }
         }
         if (step % 1000 == 0) {
            this->expectSame(map, reference);
         }
      }
      this->expectSame(map, reference);
   }
}

TYPED_TEST(AnyMap, CopiesAreIndependentAndMovesLeaveAnEmptyMap) {
   TypeParam map;
   map.insertOrReplace(7, "x");
   map.insertOrReplace(3, "x");
   TypeParam copy = map;
   *copy.find(3) = "changed";
   EXPECT_EQ(*map.find(3), "x");
   EXPECT_NE(copy, map);
   TypeParam const moved = std::move(map);
   EXPECT_EQ(moved.size(), 2U);
   // A moved-from map is as good as new.
   EXPECT_FALSE(map.erase(3));
   map.insertOrReplace(1, "z");
   EXPECT_EQ(map.size(), 1U);
   map = copy;
   EXPECT_EQ(map, copy);
   map.clear();
   EXPECT_EQ(map.find(3), nullptr);
}

// A walker that others interrupt goes on behind the last key it saw.
TEST(OrderedMap, GenerationTellsAWalkerToFindItsPlaceAgain) {
   Ordered map;
   for (U32 key = 0; key != 2000; ++key) {
      map.insertOrReplace(key, "");
   }
   std::size_t seen = 0;
   auto generation = map.generation();
   for (auto at = map.begin(); at != map.end(); ++seen) {
      U32 const key = at->key;
      if (key % 3 == 0) {
         map.erase(key);
         map.insertOrReplace(key + 100000, "");
         map.erase(key + 100000);
      }
      ASSERT_EQ(map.generation() != generation, key % 3 == 0);
      at = std::exchange(generation, map.generation()) != map.generation() ? map.lowerBound(key + 1) : std::next(at);
   }
   EXPECT_EQ(seen, 2000U);
   EXPECT_FALSE(map.erase(0));
   EXPECT_EQ(map.generation(), generation) << "nothing was erased";
   for (auto const& change : {+[](Ordered& m) { m.clear(); }, +[](Ordered& m) { m = Ordered(); },
                              +[](Ordered& m) { Ordered const gone = std::move(m); }}) {
      generation = map.generation();
      change(map);
      EXPECT_NE(map.generation(), generation);
   }
}

TEST(OrderedMap, ReplacingOneElementForEverTakesNoMemory) {
   Zam::OrderedMap<U32, std::shared_ptr<int>> map;
   auto const shared = std::make_shared<int>(0);
   for (int i = 0; i != 20000; ++i) {
      map.insertOrReplace(1, shared);
   }
   EXPECT_LT(shared.use_count(), 3000);
   EXPECT_EQ(map.size(), 1U);
}

}  // namespace
