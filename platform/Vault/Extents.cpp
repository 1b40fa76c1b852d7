#include "Vault/Extents.h"

#include <algorithm>

namespace Vault {

std::size_t Extents::classOf(U32 count) noexcept {
   return static_cast<std::size_t>(std::ranges::lower_bound(sizes, std::min(count, maxCount)) - sizes.begin());
}

void Extents::giveBackGap(U32 first, U32 end) {
   while (first < end) {
      auto const larger = std::ranges::upper_bound(sizes, end - first);
      U32 const size = *(larger - 1);
      giveBack({first, size});
      first += size;
   }
}

void Extents::reset(std::vector<Run> const& used) {
   for (auto& runs : free_) {
      runs.clear();
   }
   highWater_ = 0;
   for (Run const& run : used) {
      giveBackGap(highWater_, run.first);
      highWater_ = run.first + sizeOf(run.count);
   }
}

std::optional<U32> Extents::take(U32 count) {
   std::size_t const fitting = classOf(count);
   if (auto& runs = free_[fitting]; !runs.empty()) {
      U32 const first = runs.back();
      runs.pop_back();
      return first;
   }
   U32 const size = sizes[fitting];
   if (size <= capacity_ - highWater_) {
      highWater_ += size;
      return highWater_ - size;
   }
   for (std::size_t larger = fitting + 1; larger < sizes.size(); ++larger) {
      if (auto& runs = free_[larger]; !runs.empty()) {
         U32 const first = runs.back();
         runs.pop_back();
         giveBackGap(first + size, first + sizes[larger]);
         return first;
      }
   }
   return std::nullopt;
}

}  // namespace Vault
