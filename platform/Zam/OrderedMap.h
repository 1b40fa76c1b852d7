#pragma once

#include "Zam/Int.h"
#include "Zam/WordSort.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <functional>
#include <iterator>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zam {

// A map in key order that holds its elements in sorted blocks, so that no element costs an allocation of its own and a
// walk runs through memory in order. An insertion that is not at the end waits in a tail, which the next read sorts and
// merges: filling the map in any order and then reading it, its main use, costs one sort. Few waiting elements are put
// into their blocks one by one, so interleaved inserting, finding and erasing stay logarithmic plus part of one block.
//
// Every modification invalidates iterators and element pointers and changes generation(), by which a walker that lets
// others in knows to find its place again (lowerBound). The first read after an insertion modifies the map inside, so
// several threads may read only once one of them has.
//
// Chosen by measurement: filling it with a million 32-byte values under 8-byte keys and walking it once takes a third
// (ascending) to a ninth (shuffled) of the time that std::map takes, see bench/OrderedMapBench.cpp. A flat vector that
// is sorted at the first read costs O(n) for each interleaved change; blocks without the tail are three times slower
// when the order is random.
template <class K, class V, class Less = std::less<K>>
class OrderedMap {
 public:
   struct Entry {
      K key;
      V value;
      bool operator==(Entry const&) const = default;
   };

 private:
   // In key order.
   using Block = std::vector<Entry>;

 public:
   class const_iterator {
    public:
      using iterator_category = std::forward_iterator_tag;
      using value_type = Entry;
      using difference_type = std::ptrdiff_t;
      using pointer = Entry const*;
      using reference = Entry const&;

      const_iterator() noexcept = default;
      reference operator*() const noexcept { return *at_; }
      pointer operator->() const noexcept { return at_; }
      const_iterator& operator++() noexcept {
         if (++at_ == block_->data() + block_->size()) {
            ++block_;
            at_ = block_ == end_ ? nullptr : block_->data();
         }
         return *this;
      }
      const_iterator operator++(int) noexcept {
         auto const before = *this;
         ++*this;
         return before;
      }
      bool operator==(const_iterator const& other) const noexcept { return at_ == other.at_; }

    private:
      friend class OrderedMap;
      const_iterator(Block const* block, Block const* end, Entry const* at) noexcept
          : block_(block),
            end_(end),
            at_(at) {}

      Block const* block_ = nullptr;
      Block const* end_ = nullptr;
      Entry const* at_ = nullptr;
   };
   using value_type = Entry;
   using iterator = const_iterator;
   using key_compare = Less;

   OrderedMap() noexcept = default;
   OrderedMap(OrderedMap const&) = default;
   OrderedMap(OrderedMap&& other) noexcept { swap(other); }
   OrderedMap& operator=(OrderedMap other) noexcept {
      swap(other);
      return *this;
   }
   ~OrderedMap() = default;
   void swap(OrderedMap& other) noexcept {
      blocks_.swap(other.blocks_);
      waiting_.swap(other.waiting_);
      std::swap(size_, other.size_);
      // Different from all that walkers of either map have seen.
      generation_ = other.generation_ = std::max(generation_, other.generation_) + 1;
   }

   std::size_t size() const { return settled().size_; }
   bool empty() const noexcept { return size_ == 0 && waiting_.empty(); }
   U64 generation() const noexcept { return generation_; }

   const_iterator begin() const { return settled().iteratorAt(0, 0); }
   const_iterator end() const noexcept { return {}; }
   // The first element whose key is not less than this one.
   const_iterator lowerBound(K const& key) const {
      auto const block = settled().blockOf(key);
      return block == blocks_.size() ? end() : iteratorAt(block, placeIn(blocks_[block], key));
   }

   // Null when there is none.
   V const* find(K const& key) const {
      auto const at = lowerBound(key);
      return at != end() && !Less{}(key, at->key) ? &at->value : nullptr;
   }
   V* find(K const& key) { return const_cast<V*>(std::as_const(*this).find(key)); }
   bool contains(K const& key) const { return find(key) != nullptr; }

   void insertOrReplace(K key, V value) {
      ++generation_;
      if (waiting_.empty() && (blocks_.empty() || Less{}(blocks_.back().back().key, key))) {
         append(Entry{std::move(key), std::move(value)});
      } else {
         if (waiting_.size() == waiting_.capacity() && waiting_.size() >= waitingAtLeast / 2) {
            waiting_.reserve(std::max(size_, waitingAtLeast));  // at once, what it may get
         }
         waiting_.push_back(Entry{std::move(key), std::move(value)});
         if (waiting_.size() >= std::max(size_, waitingAtLeast)) {
            settle();
         }
      }
   }

   // Whether there was one.
   bool erase(K const& key) {
      auto const at = settled().blockOf(key);
      if (at == blocks_.size()) {
         return false;
      }
      auto& block = blocks_[at];
      auto const place = block.begin() + static_cast<std::ptrdiff_t>(placeIn(block, key));
      if (Less{}(key, place->key)) {
         return false;
      }
      block.erase(place);
      shrink(at);
      --size_;
      ++generation_;
      return true;
   }

   void clear() noexcept {
      blocks_.clear();
      waiting_.clear();
      size_ = 0;
      ++generation_;
   }

   bool operator==(OrderedMap const& other) const {
      return size() == other.size() && std::equal(begin(), end(), other.begin());
   }

 private:
   static constexpr std::size_t blockCapacity = std::max<std::size_t>(32, 10240 / sizeof(Entry));
   // Merging walks over all elements, but costs about this much less for each than inserting one into its block.
   static constexpr std::size_t mergeGain = 32;
   // The tail doubles the map at most, so replacing one element for ever does not fill the memory.
   static constexpr std::size_t waitingAtLeast = 1024;

   // A key type may offer `U64 sortWord() const` such that a < b implies a.sortWord() <= b.sortWord().
   static constexpr bool hasSortWord = std::is_same_v<Less, std::less<K>> && requires(K const& key) {
      { key.sortWord() } -> std::same_as<U64>;
   };

   // The first block whose last key is not less than this one.
   std::size_t blockOf(K const& key) const {
      auto const at = std::partition_point(blocks_.begin(), blocks_.end(),
                                           [&key](Block const& block) { return Less{}(block.back().key, key); });
      return static_cast<std::size_t>(at - blocks_.begin());
   }
   static std::size_t placeIn(Block const& block, K const& key) {
      auto const at = std::partition_point(block.begin(), block.end(),
                                           [&key](Entry const& entry) { return Less{}(entry.key, key); });
      return static_cast<std::size_t>(at - block.begin());
   }
   const_iterator iteratorAt(std::size_t block, std::size_t place) const noexcept {
      if (block == blocks_.size()) {
         return end();
      }
      return {&blocks_[block], blocks_.data() + blocks_.size(), &blocks_[block][place]};
   }

   // The map with nothing waiting.
   OrderedMap const& settled() const {
      if (!waiting_.empty()) {
         settle();
      }
      return *this;
   }
   void settle() const {
      auto waiting = std::exchange(waiting_, {});
      if (waiting.size() < size_ / mergeGain) {
         for (auto& entry : waiting) {
            insertNow(std::move(entry));
         }
         return;
      }
      merge(InOrder(waiting));
   }

   static constexpr bool byKey(Entry const& a, Entry const& b) { return Less{}(a.key, b.key); }

   static U64 wordOf(Entry const& entry) {
      if constexpr (hasSortWord) {
         return entry.key.sortWord();
      } else {
         return 0;
      }
   }

   // Elements in key order, of equal ones that inserted last coming last, for merging them in. They stay where they are
   // while what stands for them is sorted: by the words of their keys, and by the keys where those are equal. Which of
   // two comes first shows in the words, so that merging seldom waits for an element that is anywhere in memory.
   class InOrder {
    public:
      explicit InOrder(std::vector<Entry>& entries) : entries_(entries) {
         order_.reserve(entries.size());
         for (auto const& entry : entries) {
            order_.push_back({wordOf(entry), static_cast<U32>(order_.size())});
         }
         sortByWord(order_, [&entries](U32 a, U32 b) { return byKey(entries[a], entries[b]); });
      }

      std::size_t size() const noexcept { return order_.size(); }
      Entry& operator[](std::size_t i) const noexcept {
         if (i + prefetched < order_.size()) {
            __builtin_prefetch(&entries_[order_[i + prefetched].index]);
         }
         return entries_[order_[i].index];
      }
      bool isBefore(std::size_t i, Entry const& other) const {
         U64 const word = order_[i].word;
         U64 const otherWord = wordOf(other);
         return word != otherWord ? word < otherWord : byKey(entries_[order_[i].index], other);
      }

    private:
      static constexpr std::size_t prefetched = 16;

      std::vector<Entry>& entries_;
      std::vector<WordAndIndex> order_;
   };

   void merge(InOrder const& sorted) const {
      auto old = std::exchange(blocks_, {});
      size_ = 0;
      std::size_t next = 0;
      for (auto& block : old) {
         for (auto& entry : block) {
            for (; next != sorted.size() && sorted.isBefore(next, entry); ++next) {
               appendOrReplaceLast(std::move(sorted[next]));
            }
            append(std::move(entry));
         }
         Block().swap(block);
      }
      for (; next != sorted.size(); ++next) {
         appendOrReplaceLast(std::move(sorted[next]));
      }
   }

   // The key is greater than all.
   void append(Entry entry) const {
      if (blocks_.empty() || blocks_.back().size() == blockCapacity) {
         blocks_.emplace_back();
         // The first block grows with its map, most maps are small.
         blocks_.back().reserve(blocks_.size() == 1 ? 0 : blockCapacity);
      }
      blocks_.back().push_back(std::move(entry));
      ++size_;
   }
   // The key is not less than all.
   void appendOrReplaceLast(Entry entry) const {
      if (blocks_.empty() || Less{}(blocks_.back().back().key, entry.key)) {
         append(std::move(entry));
      } else {
         blocks_.back().back() = std::move(entry);
      }
   }

   void insertNow(Entry entry) const {
      auto const at = blockOf(entry.key);
      if (at == blocks_.size()) {
         return append(std::move(entry));
      }
      auto const place = placeIn(blocks_[at], entry.key);
      if (auto& present = blocks_[at][place]; !Less{}(entry.key, present.key)) {
         present.value = std::move(entry.value);
         return;
      }
      bool const full = blocks_[at].size() == blockCapacity;
      if (full) {
         split(at);
      }
      bool const upper = full && place > blockCapacity / 2;
      auto& block = blocks_[at + (upper ? 1 : 0)];
      block.insert(block.begin() + static_cast<std::ptrdiff_t>(place - (upper ? blockCapacity / 2 : 0)),
                   std::move(entry));
      ++size_;
   }
   void split(std::size_t at) const {
      auto& upper = *blocks_.emplace(blocks_.begin() + static_cast<std::ptrdiff_t>(at) + 1);
      auto& lower = blocks_[at];
      auto const middle = lower.begin() + static_cast<std::ptrdiff_t>(blockCapacity / 2);
      upper.reserve(blockCapacity);
      upper.assign(std::move_iterator(middle), std::move_iterator(lower.end()));
      lower.erase(middle, lower.end());
   }
   // A block that lost an element: joined with a neighbour that leaves it room, gone when it is empty.
   void shrink(std::size_t at) {
      auto const next = blocks_.begin() + static_cast<std::ptrdiff_t>(at) + 1;
      auto& block = blocks_[at];
      if (block.empty()) {
         blocks_.erase(next - 1);
      } else if (next != blocks_.end() && block.size() + next->size() <= blockCapacity / 2) {
         block.insert(block.end(), std::move_iterator(next->begin()), std::move_iterator(next->end()));
         blocks_.erase(next);
      }
   }

   // No block is empty. Reading settles what waits, hence mutable.
   mutable std::vector<Block> blocks_;
   mutable std::vector<Entry> waiting_;
   mutable std::size_t size_ = 0;
   U64 generation_ = 0;
};

}  // namespace Zam
