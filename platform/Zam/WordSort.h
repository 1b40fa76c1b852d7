#pragma once

#include "Zam/Int.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <utility>
#include <vector>

namespace Zam {

// What stands for an element while it is sorted: a word that orders it, and its place.
struct WordAndIndex {
   U64 word;
   U32 index;
};

// Sorts by word, stably: digit by digit from the lowest, over the bits in which the words differ at all.
inline void sortByWord(std::vector<WordAndIndex>& items) {
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

// The same, and elements of equal words by `isBefore(index, index)`, stably.
template <class IsBefore>
void sortByWord(std::vector<WordAndIndex>& items, IsBefore const& isBefore) {
   sortByWord(items);
   for (auto run = items.begin(); run != items.end();) {
      auto const end = std::find_if(run + 1, items.end(), [run](auto const& next) { return next.word != run->word; });
      if (end - run > 1) {
         std::stable_sort(run, end, [&](auto const& a, auto const& b) { return isBefore(a.index, b.index); });
      }
      run = end;
   }
}

}  // namespace Zam
