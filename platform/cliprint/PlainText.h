#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

// Text that stays on its line and does nothing to a terminal, whoever chose it. Harmful are control characters (C0,
// DEL, C1, the separators of lines and paragraphs), what turns the direction of text, and what is no UTF-8.
namespace cliprint {

constexpr U64 everyByte(U8 value) noexcept {
   return value * U64{0x0101010101010101};
}

inline U64 wordAt(char const* bytes) noexcept {
   U64 word = 0;
   std::memcpy(&word, bytes, sizeof word);
   return word;
}

// The top bit of each byte that is not printable ASCII; exact for the lowest such byte.
constexpr U64 unprintable(U64 word) noexcept {
   U64 const control = (word - everyByte(0x20)) & ~word;
   U64 const del = (word & everyByte(0x7f)) + everyByte(0x01);
   return (word | control | del) & everyByte(0x80);
}

// Whether all of it is printable ASCII, as nearly every text is. The last word overlaps the one before it.
inline bool isPrintableAscii(std::string_view text) noexcept {
   if (text.size() < sizeof(U64)) {
      return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
   }
   char const* const last = text.data() + text.size() - sizeof(U64);
   U64 found = unprintable(wordAt(last));
   for (char const* at = text.data(); at < last; at += sizeof(U64)) {
      found |= unprintable(wordAt(at));
   }
   return found == 0;
}

// A character at the start of a text.
struct Character {
   std::size_t length;  // in bytes; 1 of what is no UTF-8
   bool isUtf8;
   bool isHarmful;
};
KIV_EXPORT Character firstCharacter(std::string_view text) noexcept;

// The text with each byte of harmful characters written \xNN. What would be longer than `most` bytes ends in "...".
KIV_EXPORT std::string plainText(std::string_view text, std::size_t most = std::numeric_limits<std::size_t>::max());

}  // namespace cliprint
