#pragma once

#include "Zam/Collection.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <cstddef>
#include <iterator>
#include <optional>
#include <utility>

// Where a walk over a collection is, so that it can go on after a change. next() is the element behind the last one
// given, null at the end; it is good until the next change.
namespace Zam {

namespace detail {

// Fails with a TypeError.
[[noreturn]] KIV_EXPORT void throwChangedUnderWalk();

}  // namespace detail

template <class M>
class Place;

// A place that lost its element is behind its key.
template <class M>
concept InKeyOrder = requires(M const& m, typename detail::CollectionParts<M>::Key const& key) {
   m.lowerBound(key);
}
|| requires(M const& m, typename detail::CollectionParts<M>::Key const& key) {
   m.upper_bound(key);
};

template <InKeyOrder M>
class Place<M> {
 public:
   explicit Place(M const&) {}

   auto const* next(M const& collection) {
      at_ = !last_ ? collection.begin() : isMoved(collection) ? behindLast(collection) : std::next(at_);
      auto const* const element = at_ != collection.end() ? &*at_ : nullptr;
      if (element == nullptr) {
         return element;
      }
      if constexpr (KeyedCollection<M>) {
         last_ = element->key;
      } else {
         last_ = *element;
      }
      if constexpr (requires { collection.generation(); }) {
         generation_ = collection.generation();
      }
      return element;
   }

 private:
   using Iterator = decltype(std::declval<M const&>().begin());

   bool isMoved(M const& collection) const {
      if constexpr (requires { collection.generation(); }) {
         return generation_ != collection.generation();
      } else {
         return true;
      }
   }
   Iterator behindLast(M const& collection) const {
      if constexpr (requires { collection.upper_bound(*last_); }) {
         return collection.upper_bound(*last_);
      } else {
         auto const at = collection.lowerBound(*last_);
         bool const isThere = at != collection.end() && !typename M::key_compare()(*last_, at->key);
         return isThere ? std::next(at) : at;
      }
   }

   Iterator at_{};
   std::optional<typename detail::CollectionParts<M>::Key> last_;
   U64 generation_ = 0;
};

// By place.
template <ListCollection M>
class Place<M> {
 public:
   explicit Place(M const&) {}
   U32 key() const noexcept { return next_ - 1; }

   auto const* next(M const& collection) { return next_ < collection.size() ? &collection[next_++] : nullptr; }

 private:
   U32 next_ = 0;
};

// The same in a map whose keys are places below its limit().
template <class M>
concept WithGaps = KeyedCollection<M> && requires(M const& m) {
   m.limit();
};

template <WithGaps M>
class Place<M> {
 public:
   using Key = typename detail::CollectionParts<M>::Key;

   explicit Place(M const&) {}
   Key key() const noexcept { return static_cast<Key>(next_ - 1); }

   auto const* next(M const& collection) {
      typename detail::CollectionParts<M>::Value const* found = nullptr;
      while (found == nullptr && next_ < collection.limit()) {
         found = collection.find(static_cast<Key>(next_++));
      }
      return found;
   }

 private:
   std::size_t next_ = 0;
};

// Elements move when the map grows: whatever changed, the walk is over.
template <class M>
requires KeyedCollection<M> &&(!InKeyOrder<M>)&&(!WithGaps<M>)class Place<M> {
 public:
   explicit Place(M const& collection) : generation_(collection.generation()), at_(collection.begin()) {}

   auto const* next(M const& collection) {
      if (collection.generation() != generation_) {
         detail::throwChangedUnderWalk();
      }
      return at_ != collection.end() ? &*at_++ : nullptr;
   }

 private:
   U64 generation_;
   decltype(std::declval<M const&>().begin()) at_;
};

// Of the standard library, which does not tell of changes: those of the size or the buckets are seen, and the last
// element must still be there.
template <class M>
requires SetCollection<M> &&(!InKeyOrder<M>)class Place<M> {
 public:
   explicit Place(M const& collection) : size_(collection.size()), buckets_(collection.bucket_count()) {}

   auto const* next(M const& collection) {
      auto at = last_ ? collection.find(*last_) : collection.begin();
      if (collection.size() != size_ || collection.bucket_count() != buckets_ || (last_ && at == collection.end())) {
         detail::throwChangedUnderWalk();
      }
      at = last_ ? std::next(at) : at;
      auto const* const element = at != collection.end() ? &*at : nullptr;
      if (element != nullptr) {
         last_ = *element;
      }
      return element;
   }

 private:
   std::size_t size_;
   std::size_t buckets_;
   std::optional<typename M::key_type> last_;
};

}  // namespace Zam
