#include "Vault/Extents.h"
#include "VaultTesting.h"

namespace Vault::Testing {

TEST(ExtentsTest, runsNeverOverlapNorLeaveTheArena) {
   constexpr U32 capacity = 5000;
   Extents extents(capacity);
   std::map<U32, U32> used;  // first to count
   Random random(4);
   U32 refused = 0;
   for (U32 step = 0; step < 20000; ++step) {
      U32 const count = 1 + (random.below(3) == 0 ? random.below(600) : random.below(10));
      if (auto const first = random.below(5) < 3 ? extents.take(count) : std::nullopt) {
         auto const next = used.lower_bound(*first);
         ASSERT_TRUE(next == used.end() || *first + count <= next->first);
         ASSERT_TRUE(next == used.begin() || std::prev(next)->first + std::prev(next)->second <= *first);
         ASSERT_LE(*first + Extents::sizeOf(count), capacity);
         used[*first] = count;
      } else if (!used.empty()) {
         ++refused;
         auto const gone = std::next(used.begin(), random.below(static_cast<U32>(used.size())));
         extents.giveBack({gone->first, gone->second});
         used.erase(gone);
      }
      if (step % 500 == 0) {
         std::vector<Extents::Run> runs;
         std::ranges::transform(used, std::back_inserter(runs), [](auto const& run) {
            return Extents::Run{run.first, run.second};
         });
         extents.reset(runs);
      }
   }
   EXPECT_GT(refused, 100U);
}

TEST(ExtentsTest, joinsPiecesWhenItStartsAgain) {
   Extents extents(1200);
   while (extents.take(1)) {
   }
   extents.reset({{600, 600}});
   EXPECT_EQ(extents.take(600), 0U);
   EXPECT_EQ(extents.take(1), std::nullopt);
}

}  // namespace Vault::Testing
