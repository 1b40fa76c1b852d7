#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"

#include <array>
#include <optional>
#include <vector>

namespace Vault {

// Hands out runs of elements of a table's arena; the writer's own knowledge, built anew from the records when it opens
// the table. Runs come in few sizes, so that what one record gives back fits the next; the arena is used from the
// front. Pieces are joined again only by reset().
class KIV_EXPORT Extents {
 public:
   struct Run {
      U32 first = 0;
      U32 count = 0;
   };

   static constexpr std::array<U32, 19> sizes{1,  2,  3,  4,   6,   8,   12,  16,  24, 32,
                                              48, 64, 96, 128, 192, 256, 384, 512, 600};
   static constexpr U32 maxCount = sizes.back();
   // The elements that a run of `count`, at most maxCount, takes up.
   static U32 sizeOf(U32 count) noexcept { return sizes[classOf(count)]; }

   explicit Extents(U32 capacity) : capacity_(capacity) {}

   // It has become larger.
   void capacityIs(U32 capacity) noexcept { capacity_ = capacity; }
   // Starts again with these runs in use. They do not overlap, fit, and are in order.
   void reset(std::vector<Run> const& used);
   // The first element of a run of at least `count`, 1 to maxCount; nothing when there is no such run.
   std::optional<U32> take(U32 count);
   void giveBack(Run run) { free_[classOf(run.count)].push_back(run.first); }

 private:
   static std::size_t classOf(U32 count) noexcept;
   void giveBackGap(U32 first, U32 end);

   U32 capacity_;
   U32 highWater_ = 0;
   std::array<std::vector<U32>, sizes.size()> free_;
};

}  // namespace Vault
