#include "Zam/WordSort.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <utility>

namespace Zam {

// Digit by digit from the lowest, over the bits in which the words differ at all.
void sortByWord(std::vector<WordAndIndex>& items) {
   constexpr int digitBits = 11;
   constexpr std::size_t digits = std::size_t{1} << digitBits;
   U64 differing = 0;
   for (auto const& item : items) {
      differing |= item.word ^ items.front().word;
   }
   std::vector<WordAndIndex> sorted(items.size());
   int const end = 64 - std::countl_zero(differing);
   for (int shift = std::countr_zero(differing); shift < end; shift += digitBits) {
      auto const digit = [shift](WordAndIndex const& item) { return item.word >> shift & (digits - 1); };
      std::array<U32, digits> places{};
      for (auto const& item : items) {
         ++places[digit(item)];
      }
      U32 place = 0;
      for (auto& count : places) {
         place += std::exchange(count, place);
      }
      for (auto const& item : items) {
         sorted[places[digit(item)]++] = item;
      }
      items.swap(sorted);
   }
}

void sortByWord(std::vector<WordAndIndex>& items, void const* context, bool (*isBefore)(void const*, U32, U32)) {
   constexpr std::size_t digitByDigitAtLeast = 1024;
   auto const before = [&](WordAndIndex const& a, WordAndIndex const& b) {
      return a.word != b.word ? a.word < b.word : isBefore(context, a.index, b.index);
   };
   if (items.size() < digitByDigitAtLeast) {
      std::stable_sort(items.begin(), items.end(), before);
      return;
   }
   sortByWord(items);
   for (auto run = items.begin(); run != items.end();) {
      auto const end = std::find_if(run + 1, items.end(), [run](auto const& next) { return next.word != run->word; });
      if (end - run > 1) {
         std::stable_sort(run, end, before);
      }
      run = end;
   }
}

}  // namespace Zam
