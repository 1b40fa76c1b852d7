#pragma once

#include "Zam/Int.h"

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace Kiv {

// A collection keyed by via index. Indices are small and dense, so it is an array with gaps: finding one is one step,
// and an unused collection costs nothing but its header.
template <class T, class Index = U16>
class PerVia {
 public:
   struct value_type {
      Index key;
      T value;
   };

   T const* find(Index index) const noexcept {
      return index < values_.size() && values_[index] ? &*values_[index] : nullptr;
   }
   bool has(Index index) const noexcept { return find(index) != nullptr; }
   U32 size() const noexcept { return size_; }

   void insertOrReplace(Index index, T value) {
      if (index >= values_.size()) {
         values_.resize(std::size_t{index} + 1);
      }
      size_ += values_[index] ? 0 : 1;
      values_[index] = std::move(value);
   }
   bool erase(Index index) noexcept {
      if (!has(index)) {
         return false;
      }
      values_[index].reset();
      --size_;
      return true;
   }
   void clear() noexcept {
      values_.clear();
      size_ = 0;
   }

 private:
   std::vector<std::optional<T>> values_;
   U32 size_ = 0;
};

}  // namespace Kiv
