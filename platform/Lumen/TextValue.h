#pragma once

#include "Zam/Hash.h"
#include "Zam/Strep.h"

#include <array>
#include <concepts>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

// What every small value of this folder gives: one text, written without allocation and parsed back to the same value.
// formatTo() may use all of maxTextLength characters at `out` as scratch; only the returned count is text. parse()
// throws Zam::ParseError for text that is not the type's form and Zam::RangeError for a value the type refuses.
// The string form, the textual form (the text in quotes), stream output and std::hash follow from these.
namespace Lumen {

template <class T>
concept TextValue = requires(T const value, char* out, std::string_view text) {
   { T::maxTextLength } -> std::convertible_to<std::size_t>;
   { value.formatTo(out) } -> std::same_as<std::size_t>;
   { T::parse(text) } -> std::same_as<T>;
   { value.hashValue() } -> std::same_as<std::size_t>;
};

template <TextValue T>
std::string textOf(T const& value) {
   std::array<char, T::maxTextLength> text;
   return std::string(text.data(), value.formatTo(text.data()));
}

template <TextValue T>
void strepAppend(std::string& out, T const& value) {
   std::array<char, T::maxTextLength> text;
   Zam::strepAppendQuoted(out, std::string_view(text.data(), value.formatTo(text.data())));
}

template <TextValue T>
void strepParse(Zam::StrepReader& in, T& value) {
   Zam::StrepReader ahead = in;
   auto const text = ahead.quoted();
   try {
      value = T::parse(text);
   } catch (Zam::ParseError const& inner) {
      in.fail(inner);
   }
   in = ahead;
}

template <TextValue T>
std::ostream& operator<<(std::ostream& out, T const& value) {
   std::array<char, T::maxTextLength> text;
   return out << std::string_view(text.data(), value.formatTo(text.data()));
}

}  // namespace Lumen

template <Lumen::TextValue T>
struct std::hash<T> {
   std::size_t operator()(T const& value) const noexcept { return value.hashValue(); }
};
