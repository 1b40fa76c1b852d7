#pragma once

#include "Zam/Hash.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace Zam {

// A hash map by open addressing: one array of slots, linear probing, no allocation per element and no tombstones.
// Iteration order is unspecified. Every insertion and erasure may move elements, so it invalidates iterators and
// element pointers, and changes generation(). Reading is safe from several threads while nobody writes.
template <class K, class V, class Hash = std::hash<K>>
class HashMap {
 public:
   struct Entry {
      K key;
      V value;
      bool operator==(Entry const&) const = default;
   };

 private:
   // The flag beside the key: a probe that hits touches one place.
   using Slots = std::vector<std::optional<Entry>>;

 public:
   class const_iterator {
    public:
      using iterator_category = std::forward_iterator_tag;
      using value_type = Entry;
      using difference_type = std::ptrdiff_t;
      using pointer = Entry const*;
      using reference = Entry const&;

      const_iterator() noexcept = default;
      reference operator*() const noexcept { return **at_; }
      pointer operator->() const noexcept { return &**at_; }
      const_iterator& operator++() noexcept {
         ++at_;
         skipEmpty();
         return *this;
      }
      const_iterator operator++(int) noexcept {
         auto const before = *this;
         ++*this;
         return before;
      }
      bool operator==(const_iterator const& other) const noexcept { return at_ == other.at_; }

    private:
      friend class HashMap;
      const_iterator(std::optional<Entry> const* at, std::optional<Entry> const* end) noexcept : at_(at), end_(end) {
         skipEmpty();
      }
      void skipEmpty() noexcept {
         while (at_ != end_ && !at_->has_value()) {
            ++at_;
         }
      }

      std::optional<Entry> const* at_ = nullptr;
      std::optional<Entry> const* end_ = nullptr;
   };
   using value_type = Entry;
   using iterator = const_iterator;

   HashMap() noexcept = default;
   HashMap(HashMap const&) = default;
   HashMap(HashMap&& other) noexcept { swap(other); }
   HashMap& operator=(HashMap other) noexcept {
      swap(other);
      return *this;
   }
   ~HashMap() = default;
   void swap(HashMap& other) noexcept {
      slots_.swap(other.slots_);
      std::swap(size_, other.size_);
      // Different from all that walkers of either map have seen.
      generation_ = other.generation_ = std::max(generation_, other.generation_) + 1;
   }

   std::size_t size() const noexcept { return size_; }
   bool empty() const noexcept { return size_ == 0; }
   U64 generation() const noexcept { return generation_; }
   const_iterator begin() const noexcept { return {slots_.data(), slots_.data() + slots_.size()}; }
   const_iterator end() const noexcept { return {slots_.data() + slots_.size(), slots_.data() + slots_.size()}; }

   // Null when there is none.
   V const* find(K const& key) const {
      if (size_ == 0) {
         return nullptr;
      }
      auto const& slot = slots_[slotOf(key)];
      return slot ? &slot->value : nullptr;
   }
   V* find(K const& key) { return const_cast<V*>(std::as_const(*this).find(key)); }
   bool contains(K const& key) const { return find(key) != nullptr; }

   // Ahead of a find: asks for the memory that it will read.
   void prefetch(K const& key) const {
      if (size_ != 0) {
         __builtin_prefetch(&slots_[homeOf(key)]);
      }
   }

   // The element that is now in the map.
   V& insertOrReplace(K key, V value) {
      ++generation_;
      reserve(size_ + 1);
      auto& slot = slots_[slotOf(key)];
      if (slot) {
         slot->value = std::move(value);
      } else {
         slot.emplace(Entry{std::move(key), std::move(value)});
         ++size_;
      }
      return slot->value;
   }

   // Whether there was one.
   bool erase(K const& key) {
      if (size_ == 0) {
         return false;
      }
      auto const at = slotOf(key);
      if (!slots_[at]) {
         return false;
      }
      closeGap(at);
      --size_;
      ++generation_;
      return true;
   }

   void clear() noexcept {
      slots_.clear();
      size_ = 0;
      ++generation_;
   }

   // Room for `count` elements without a further allocation.
   void reserve(std::size_t count) {
      // At most three quarters full.
      if (count > slots_.size() - slots_.size() / 4) {
         rehash(std::bit_ceil(std::max<std::size_t>(8, count + count / 2)));
      }
   }

   bool operator==(HashMap const& other) const {
      return size_ == other.size_ && std::all_of(begin(), end(), [&other](Entry const& entry) {
                auto const* const found = other.find(entry.key);
                return found != nullptr && *found == entry.value;
             });
   }

 private:
   std::size_t homeOf(K const& key) const { return mixedHash(Hash{}(key)) & (slots_.size() - 1); }
   std::size_t next(std::size_t at) const noexcept { return (at + 1) & (slots_.size() - 1); }

   // Where the key is, or the empty slot where it would go.
   std::size_t slotOf(K const& key) const {
      auto at = homeOf(key);
      while (slots_[at] && !(slots_[at]->key == key)) {
         at = next(at);
      }
      return at;
   }

   // Moves later elements of the run back, so that each stays reachable from its home.
   void closeGap(std::size_t gap) {
      auto const mask = slots_.size() - 1;
      for (auto at = next(gap); slots_[at]; at = next(at)) {
         if (((at - homeOf(slots_[at]->key)) & mask) >= ((at - gap) & mask)) {
            slots_[gap] = std::move(slots_[at]);
            gap = at;
         }
      }
      slots_[gap].reset();
   }

   void rehash(std::size_t slotCount) {
      Slots old = std::exchange(slots_, Slots(slotCount));
      for (auto& slot : old) {
         if (slot) {
            auto& target = slots_[slotOf(slot->key)];
            target = std::move(slot);
         }
      }
   }

   Slots slots_;
   std::size_t size_ = 0;
   U64 generation_ = 0;
};

}  // namespace Zam
