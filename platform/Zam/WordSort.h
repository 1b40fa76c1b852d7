#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"

#include <vector>

namespace Zam {

// What stands for an element while it is sorted: a word that orders it, and its place.
struct WordAndIndex {
   U64 word;
   U32 index;
};

// Sorts by word, stably.
KIV_EXPORT void sortByWord(std::vector<WordAndIndex>& items);
// The same, and elements of equal words by `isBefore(context, index, index)`.
KIV_EXPORT void sortByWord(std::vector<WordAndIndex>& items, void const* context,
                           bool (*isBefore)(void const* context, U32 a, U32 b));

// The same, by `isBefore(index, index)`.
template <class IsBefore>
void sortByWord(std::vector<WordAndIndex>& items, IsBefore const& isBefore) {
   sortByWord(items, &isBefore,
              [](void const* function, U32 a, U32 b) { return (*static_cast<IsBefore const*>(function))(a, b); });
}

}  // namespace Zam
