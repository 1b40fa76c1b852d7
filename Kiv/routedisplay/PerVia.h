#pragma once

#include "Zam/Int.h"

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace Kiv {

// A collection keyed by via index. Indices are small and dense, so it is an array with gaps: finding one is one step,
// and an unused collection costs nothing but its header.
template <class T>
class PerVia {
 public:
   T const* find(U16 index) const noexcept {
      return index < values_.size() && values_[index] ? &*values_[index] : nullptr;
   }
   // The value, or `otherwise` where there is none.
   T get(U16 index, T otherwise = T{}) const {
      auto const* const found = find(index);
      return found != nullptr ? *found : std::move(otherwise);
   }
   bool has(U16 index) const noexcept { return find(index) != nullptr; }

   void is(U16 index, T value) {
      if (index >= values_.size()) {
         values_.resize(std::size_t{index} + 1);
      }
      values_[index] = std::move(value);
   }
   void del(U16 index) noexcept {
      if (index < values_.size()) {
         values_[index].reset();
      }
   }
   void delAll() noexcept { values_.clear(); }

 private:
   std::vector<std::optional<T>> values_;
};

}  // namespace Kiv
