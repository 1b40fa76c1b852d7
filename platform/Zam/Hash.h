#pragma once

#include "Zam/Int.h"

#include <concepts>
#include <cstddef>
#include <functional>
#include <ranges>
#include <type_traits>

// Hash values of values: std::hash where the type has one, of the elements for a container.
namespace Zam {

// Spreads every input bit over the whole word, so that neighbouring integers do not land in neighbouring slots.
constexpr std::size_t mixedHash(std::size_t hash) noexcept {
   U64 bits = hash;
   bits = (bits ^ (bits >> 32U)) * 0x9e3779b97f4a7c15U;
   bits = (bits ^ (bits >> 29U)) * 0xbf58476d1ce4e5b9U;
   return bits ^ (bits >> 32U);
}

// Of the parts in their order.
template <std::same_as<std::size_t>... Hashes>
constexpr std::size_t combinedHash(Hashes... hashes) noexcept {
   std::size_t combined = sizeof...(hashes);
   ((combined = mixedHash(combined + 0x9e3779b97f4a7c15U) ^ hashes), ...);
   return mixedHash(combined);
}

template <class T>
concept StdHashable = requires(T const& value) {
   { std::hash<T>{}(value) } -> std::convertible_to<std::size_t>;
};

template <class T>
std::size_t hashOf(T const& value) {
   if constexpr (StdHashable<T>) {
      return std::hash<T>{}(value);
   } else if constexpr (std::ranges::range<T const>) {
      // A sum, since equal hash maps may hold their elements in different orders.
      std::size_t sum = 0;
      for (auto const& element : value) {
         sum += mixedHash(hashOf(element));
      }
      return sum;
   } else {
      auto const& [key, mapped] = value;
      return combinedHash(hashOf(key), hashOf(mapped));
   }
}

}  // namespace Zam
