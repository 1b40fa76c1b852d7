#pragma once

#include "Zam/Int.h"

#include <array>
#include <cstddef>
#include <limits>
#include <string_view>

namespace Lumen {

// What is left of a text that is being read. Nothing here throws or allocates: readers return false, and the parse()
// on top of them says what it expected. After a false the cursor may stand anywhere.
class TextCursor {
 public:
   explicit constexpr TextCursor(std::string_view text) noexcept : at_(text.data()), end_(text.data() + text.size()) {}

   constexpr bool atEnd() const noexcept { return at_ == end_; }
   // The next character; NUL at the end, which no reader takes for anything.
   constexpr char peek() const noexcept { return at_ == end_ ? '\0' : *at_; }
   constexpr bool accept(char expected) noexcept {
      bool const met = at_ != end_ && *at_ == expected;
      at_ += met;
      return met;
   }

   // A decimal number without leading zeros; one that does not fit is the largest U32.
   constexpr bool decimal(U32& value) noexcept {
      auto const* const begin = at_;
      U64 number = 0;
      for (; at_ != end_ && isDigit(*at_); ++at_) {
         number = number * 10 + static_cast<U64>(*at_ - '0');
      }
      bool const fits = at_ - begin <= maxDigits && number <= maxNumber;
      value = static_cast<U32>(fits ? number : maxNumber);
      return at_ != begin && (*begin != '0' || at_ == begin + 1);
   }

   // Up to `limit` hex digits in either case; returns how many there were.
   constexpr unsigned hex(U32& value, unsigned limit) noexcept {
      value = 0;
      unsigned digits = 0;
      for (; digits < limit && at_ != end_ && hexValue(*at_) < 16; ++digits, ++at_) {
         value = value << 4 | hexValue(*at_);
      }
      return digits;
   }

   constexpr bool nextIsHex() const noexcept { return hexValue(peek()) < 16; }

   static constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

 private:
   static constexpr std::ptrdiff_t maxDigits = 10;
   static constexpr U64 maxNumber = std::numeric_limits<U32>::max();
   static constexpr auto hexValues = [] {
      std::array<U8, 256> values;
      values.fill(16);
      for (U8 i = 0; i < 16; ++i) {
         values[static_cast<U8>("0123456789abcdef"[i])] = i;
         values[static_cast<U8>("0123456789ABCDEF"[i])] = i;
      }
      return values;
   }();
   static constexpr U8 hexValue(char c) noexcept { return hexValues[static_cast<U8>(c)]; }

   char const* at_;
   char const* end_;
};

// Reads a T that is the whole text.
template <class T>
bool readWhole(std::string_view text, T& value) {
   TextCursor in(text);
   return T::read(in, value) && in.atEnd();
}

}  // namespace Lumen
