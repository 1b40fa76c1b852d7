#pragma once

#include "Zam/Hash.h"
#include "Zam/Strep.h"

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

// Value types that are described once. A value type is an aggregate of public attributes that derives from ValueType
// and lists them, all and in order:
//
//    struct RouteSortKey : Zam::ValueType {
//       Lumen::Prefix prefix;
//       U8 preference = 1;
//       static constexpr auto zamDescription() {
//          return Zam::describe<RouteSortKey>("Kiv::RouteSortKey", Zam::attribute("prefix", &RouteSortKey::prefix),
//                                             Zam::attribute("preference", &RouteSortKey::preference));
//       }
//    };
//
// Textual form, parsing, stream output, equality, hash and truth follow from the list; an attribute missing from it
// breaks the build. Its first initializer is that of the base: RouteSortKey{{}, prefix, 1}. A collection attribute is
// compared and hashed, but its place in the text holds None, and a type that has one cannot be parsed: trying to is a
// programming error.
namespace Zam {

struct ValueType {};

template <class X, class M, bool Collection>
struct Attribute {
   using Type = M;
   static constexpr bool isCollection = Collection;

   std::string_view name;
   M X::*member;
   std::string_view line;  // what it is, for people
};

template <class X, class M>
constexpr Attribute<X, M, false> attribute(std::string_view name, M X::*member, std::string_view line = {}) noexcept {
   return {name, member, line};
}
template <class X, class M>
constexpr Attribute<X, M, true> collection(std::string_view name, M X::*member, std::string_view line = {}) noexcept {
   return {name, member, line};
}

// Attributes in a row: a function that hands them on all at once, attributes(a, b)(function) being function(a, b). It
// compiles quicker than a tuple.
template <class... Attributes>
constexpr auto attributes(Attributes... attributes) noexcept {
   return [attributes...](auto const& function) { return function(attributes...); };
}
// Hands the attributes of several rows on, one row behind the other.
template <class Function>
constexpr auto withAttributes(Function const& function) {
   return function();
}
template <class Function, class Row, class... Rows>
constexpr auto withAttributes(Function const& function, Row const& row, Rows const&... rows) {
   return row([&](auto const&... first) {
      return withAttributes([&](auto const&... others) { return function(first..., others...); }, rows...);
   });
}

template <class Row, std::size_t Size, bool HasCollection>
struct Description {
   static constexpr std::size_t size = Size;
   static constexpr bool hasCollection = HasCollection;

   std::string_view typeName;
   Row with;  // the row
};

namespace detail {

struct AnyInitializer {
   template <class T>
   operator T() const;  // NOLINT(google-explicit-constructor): never called, only matched
};

template <std::size_t>
using AnyInitializerAt = AnyInitializer;

template <class X, std::size_t Count>
constexpr bool takesInitializers = []<std::size_t... I>(std::index_sequence<I...>) {
   return requires {
      X{ValueType{}, AnyInitializerAt<I>{}...};
   };
}
(std::make_index_sequence<Count>());

}  // namespace detail

template <class X, class... Attributes>
constexpr auto describe(std::string_view typeName, Attributes... attributes) noexcept {
   constexpr std::size_t count = sizeof...(Attributes);
   static_assert(detail::takesInitializers<X, count>, "the description lists more attributes than the type has");
   static_assert(!detail::takesInitializers<X, count + 1>, "an attribute is missing from the description");
   auto const row = Zam::attributes(attributes...);
   return Description<decltype(row), count, (Attributes::isCollection || ...)>{typeName, row};
}

template <class T>
concept Described = std::derived_from<T, ValueType> && requires {
   T::zamDescription();
};

template <Described T>
inline constexpr auto descriptionOf = T::zamDescription();

// Calls function(attribute) for each attribute in declaration order.
template <Described T, class Function>
constexpr void forEachAttribute(Function&& function) {
   descriptionOf<T>.with([&function](auto const&... attributes) { (function(attributes), ...); });
}

template <Described T>
constexpr bool operator==(T const& a, T const& b) {
   return descriptionOf<T>.with([&a, &b](auto const&... at) { return ((a.*at.member == b.*at.member) && ...); });
}

// The truth value: whether it differs from the default-constructed value.
template <Described T>
constexpr bool isSet(T const& value) {
   return !(value == T{});
}

// A type that holds a collection was to be parsed; fails an assertion.
[[noreturn]] KIV_EXPORT void parsedTypeWithCollection(std::string_view typeName) noexcept;

template <Described T>
void strepAppend(std::string& out, T const& value) {
   constexpr auto const& description = descriptionOf<T>;
   if constexpr (description.size != 0) {
      out.append("Value('").append(description.typeName).append("', ** {'");
      std::string_view separator;
      forEachAttribute<T>([&](auto const& at) {
         out.append(separator).append(at.name).append("': ");
         if constexpr (std::remove_cvref_t<decltype(at)>::isCollection) {
            out += "None";
         } else {
            strepAppend(out, value.*at.member);
         }
         separator = ", '";
      });
      out += "})";
   }
}

template <Described T>
void strepParse(StrepReader& in, T& value) {
   constexpr auto const& description = descriptionOf<T>;
   if constexpr (description.hasCollection) {
      parsedTypeWithCollection(description.typeName);
   } else if constexpr (description.size != 0) {
      in.expect("Value('");
      in.expect(description.typeName);
      in.expect("', ** {'");
      std::string_view separator;
      forEachAttribute<T>([&](auto const& at) {
         in.expect(separator);
         in.expect(at.name);
         in.expect("': ");
         strepParse(in, value.*at.member);
         separator = ", '";
      });
      in.expect("})");
   }
}

template <Described T>
std::ostream& operator<<(std::ostream& out, T const& value) {
   return out << valueToStrep(value);
}

}  // namespace Zam

template <Zam::Described T>
struct std::hash<T> {
   std::size_t operator()(T const& value) const {
      return Zam::descriptionOf<T>.with(
          [&value](auto const&... at) { return Zam::combinedHash(Zam::hashOf(value.*at.member)...); });
   }
};
