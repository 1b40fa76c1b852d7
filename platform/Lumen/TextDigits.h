#pragma once

#include "Zam/Int.h"

#include <array>
#include <charconv>
#include <cstring>
#include <string_view>

// Writers of digits and literals at a place that has room for them; each returns the place behind what it wrote.
namespace Lumen {

inline constexpr char hexDigits[] = "0123456789abcdef";

inline char* formatText(char* out, std::string_view text) noexcept {
   std::memcpy(out, text.data(), text.size());
   return out + text.size();
}

// At most ten digits.
inline char* formatDecimal(char* out, U32 value) noexcept {
   return std::to_chars(out, out + 10, value).ptr;
}

// Two lower-case hex digits for every byte.
inline constexpr auto hexPairs = [] {
   std::array<std::array<char, 2>, 256> pairs{};
   for (unsigned i = 0; i < pairs.size(); ++i) {
      pairs[i] = {hexDigits[i >> 4], hexDigits[i & 0xf]};
   }
   return pairs;
}();

inline char* formatHexPair(char* out, U32 byte) noexcept {
   std::memcpy(out, hexPairs[byte & 0xff].data(), 2);
   return out + 2;
}

}  // namespace Lumen
