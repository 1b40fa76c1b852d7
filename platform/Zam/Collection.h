#pragma once

#include "Zam/Int.h"

#include <concepts>
#include <cstddef>
#include <string_view>
#include <utility>

// What the runtime takes for a collection: a map of {key, value} elements (OrderedMap, HashMap, FlatMap and the like),
// a set, or a list, whose keys are the places 0, 1, 2...
namespace Zam {

template <class M>
concept KeyedCollection = requires(M& m, typename M::value_type const& element) {
   m.find(element.key);
   m.insertOrReplace(element.key, element.value);
   m.erase(element.key);
   m.clear();
};

template <class M>
concept SetCollection = std::same_as<typename M::key_type, typename M::value_type> &&
    requires(M& m, typename M::key_type const& key) {
   m.insert(key);
   m.erase(key);
   m.find(key);
   m.clear();
};

template <class M>
concept ListCollection =
    !std::convertible_to<M const&, std::string_view> && requires(M & m, typename M::value_type const& element) {
   m.push_back(element);
   m[m.size()];
   m.clear();
};

template <class M>
concept Collection = KeyedCollection<M> || SetCollection<M> || ListCollection<M>;

namespace detail {

// The types of what is looked up and of what is found.
template <class M>
struct CollectionParts;
template <KeyedCollection M>
struct CollectionParts<M> {
   using Key = decltype(M::value_type::key);
   using Value = decltype(M::value_type::value);
};
template <SetCollection M>
struct CollectionParts<M> {
   using Key = typename M::key_type;
   using Value = Key;
};
template <ListCollection M>
struct CollectionParts<M> {
   using Key = U32;
   using Value = typename M::value_type;
};

template <class M, class Key>
auto const* foundIn(M const& collection, Key const& key) {
   if constexpr (ListCollection<M>) {
      return key < collection.size() ? &collection[key] : nullptr;
   } else if constexpr (SetCollection<M>) {
      auto const at = collection.find(key);
      return at != collection.end() ? &*at : nullptr;
   } else {
      return collection.find(key);
   }
}

// A place behind the end of a list is the one at its end.
template <class M, class Key, class Value>
void elementIs(M& collection, Key key, Value value) {
   if constexpr (!ListCollection<M>) {
      collection.insertOrReplace(std::move(key), std::move(value));
   } else if (key < collection.size()) {
      collection[key] = std::move(value);
   } else {
      collection.push_back(std::move(value));
   }
}

template <class M, class Key>
void elementDel(M& collection, Key const& key) {
   if constexpr (!ListCollection<M>) {
      collection.erase(key);
   } else if (key < collection.size()) {
      collection.erase(collection.begin() + key);
   }
}

}  // namespace detail
}  // namespace Zam
