#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

namespace Zam {

// A map in key order for few elements, most often one: a sorted array, so that it is three words when it is empty and
// one block of memory otherwise. A lookup is a binary search, an insertion moves what comes behind it. Every
// modification invalidates iterators and element pointers. Reading is safe from several threads while nobody writes.
template <class K, class V, class Less = std::less<K>>
class FlatMap {
 public:
   struct Entry {
      Entry(K const& k, V v) : key(k), value(std::move(v)) {}
      K key;
      V value;
      bool operator==(Entry const&) const = default;
   };
   using value_type = Entry;
   using const_iterator = typename std::vector<Entry>::const_iterator;
   using iterator = const_iterator;
   using key_compare = Less;

   std::size_t size() const noexcept { return entries_.size(); }
   bool empty() const noexcept { return entries_.empty(); }
   const_iterator begin() const noexcept { return entries_.begin(); }
   const_iterator end() const noexcept { return entries_.end(); }

   // Null when there is none.
   V const* find(K const& key) const {
      auto const at = placeOf(key);
      return isAt(at, key) ? &entries_[at].value : nullptr;
   }
   V* find(K const& key) { return const_cast<V*>(std::as_const(*this).find(key)); }
   bool contains(K const& key) const { return find(key) != nullptr; }
   // The first element whose key is not less than this one.
   const_iterator lowerBound(K const& key) const { return begin() + static_cast<std::ptrdiff_t>(placeOf(key)); }

   // The element of that key, made when there is none yet.
   V& valueOf(K const& key) {
      auto const at = placeOf(key);
      if (at == entries_.size()) {
         entries_.emplace_back(key, V());
      } else if (Less{}(key, entries_[at].key)) {
         entries_.emplace(entries_.begin() + static_cast<std::ptrdiff_t>(at), key, V());
      }
      return entries_[at].value;
   }
   void insertOrReplace(K const& key, V value) { valueOf(key) = std::move(value); }

   // Whether there was one.
   bool erase(K const& key) {
      auto const at = placeOf(key);
      bool const found = isAt(at, key);
      if (found) {
         entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(at));
      }
      return found;
   }

   void clear() noexcept { entries_.clear(); }
   // Room for `count` elements without a further allocation.
   void reserve(std::size_t count) { entries_.reserve(count); }

   bool operator==(FlatMap const&) const = default;

 private:
   // The first whose key is not less. Filling the map in order comes first.
   std::size_t placeOf(K const& key) const {
      if (entries_.empty() || Less{}(entries_.back().key, key)) {
         return entries_.size();
      }
      auto const at = std::partition_point(entries_.begin(), entries_.end(),
                                           [&key](Entry const& entry) { return Less{}(entry.key, key); });
      return static_cast<std::size_t>(at - entries_.begin());
   }
   bool isAt(std::size_t place, K const& key) const {
      return place != entries_.size() && !Less{}(key, entries_[place].key);
   }

   std::vector<Entry> entries_;
};

}  // namespace Zam
