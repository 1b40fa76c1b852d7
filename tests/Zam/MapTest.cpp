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

void expectSame(Ordered const& map, std::map<U32, Text> const& reference) {
   ASSERT_EQ(map.size(), reference.size());
   auto expected = reference.begin();
   for (auto const& [key, value] : map) {
      ASSERT_EQ(key, expected->first);
      ASSERT_EQ(value, expected->second);
      ++expected;
   }
}

template <class Map>
void expectSame(Map const& map, std::map<U32, Text> const& reference) {
   ASSERT_EQ(map.size(), reference.size());
   std::size_t visited = 0;
   for (auto const& [key, value] : map) {
      ASSERT_TRUE(reference.contains(key));
      ASSERT_EQ(value, reference.at(key));
      ++visited;
   }
   ASSERT_EQ(visited, reference.size());
}

template <class Map>
class AnyMap : public testing::Test {};
using Maps = testing::Types<Ordered, Zam::HashMap<U32, Text>, Zam::HashMap<U32, Text, BadHash>>;
TYPED_TEST_SUITE(AnyMap, Maps);

// Phases that mostly fill and phases that mostly empty, over key ranges that make few and many collisions.
TYPED_TEST(AnyMap, BehavesAsTheReferenceUnderRandomOperations) {
   std::mt19937 random(11);
   for (U32 const range : {5U, 100U, 3000U}) {
      TypeParam map;
      std::map<U32, Text> reference;
      for (int step = 0; step != 12000; ++step) {
         auto const key = static_cast<U32>(random() % range);
         U32 const filling = (step / 3000) % 2 == 0 ? 7 : 2;
         if (random() % 10 < filling) {
            auto const value = std::to_string(step);
            map.insertOrReplace(key, value);
            reference.insert_or_assign(key, value);
         } else {
            ASSERT_EQ(map.erase(key), reference.erase(key) != 0) << key;
         }
         if (random() % 8 == 0) {
            auto const other = static_cast<U32>(random() % range);
            auto const* const found = map.find(other);
            auto const expected = reference.find(other);
            ASSERT_EQ(found != nullptr, expected != reference.end()) << other;
            ASSERT_TRUE(found == nullptr || *found == expected->second) << other;
         }
         if (step % 1000 == 0) {
            expectSame(map, reference);
         }
      }
      expectSame(map, reference);
   }
}

TYPED_TEST(AnyMap, CopiesAreIndependentAndMovesLeaveAnEmptyMap) {
   TypeParam map;
   for (U32 const key : {7U, 3U, 5U}) {
      map.insertOrReplace(key, "x");
   }
   TypeParam copy = map;
   copy.insertOrReplace(4, "y");
   EXPECT_EQ(map.find(4), nullptr);
   EXPECT_NE(copy, map);
   *copy.find(3) = "changed";
   EXPECT_EQ(*map.find(3), "x");
   TypeParam const moved = std::move(map);
   EXPECT_EQ(moved.size(), 3U);
   // A moved-from map is as good as new.
   EXPECT_EQ(map.size(), 0U);
   EXPECT_FALSE(map.erase(3));
   map.insertOrReplace(1, "z");
   EXPECT_EQ(map.size(), 1U);
   map = copy;
   EXPECT_EQ(map, copy);
   map.clear();
   EXPECT_EQ(map.find(3), nullptr);
}

// Keys that are sorted by a word first, which they share by fours.
struct WordKey {
   U32 value;
   auto operator<=>(WordKey const&) const = default;
   U64 sortWord() const noexcept { return U64{value / 4} << 20U; }
};

// Many insertions between two reads are sorted at once; the last of equal keys counts.
TEST(OrderedMap, SortsWhatIsInsertedInOneGo) {
   std::mt19937 random(12);
   Zam::OrderedMap<WordKey, Text> byWord;
   Ordered byKey;
   std::map<U32, Text> reference;
   for (int round = 0; round != 3; ++round) {
      for (int i = 0; i != 4000; ++i) {
         auto const key = static_cast<U32>(random() % 20000);
         auto const value = std::to_string(round * 4000 + i);
         byWord.insertOrReplace({key}, value);
         byKey.insertOrReplace(key, value);
         reference.insert_or_assign(key, value);
      }
      expectSame(byKey, reference);
      ASSERT_TRUE(std::ranges::equal(byWord, reference, [](auto const& entry, auto const& expected) {
         return entry.key.value == expected.first && entry.value == expected.second;
      }));
   }
}

TEST(OrderedMap, LowerBoundFindsThePlaceAcrossBlocks) {
   Ordered map;
   for (U32 key = 0; key != 4000; key += 2) {
      map.insertOrReplace(key, "");
   }
   for (U32 key = 0; key != 3998; ++key) {
      ASSERT_EQ(map.lowerBound(key)->key, key + key % 2);
   }
   EXPECT_EQ(map.lowerBound(3999), map.end());
   EXPECT_EQ(Ordered().lowerBound(0), Ordered().end());
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
   generation = map.generation();
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
   map.insertOrReplace(2, nullptr);
   for (int i = 0; i != 20000; ++i) {
      map.insertOrReplace(1, shared);
   }
   EXPECT_LT(shared.use_count(), 3000);
   EXPECT_EQ(map.size(), 2U);
}

}  // namespace
