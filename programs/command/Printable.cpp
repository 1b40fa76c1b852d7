#include "programs/command/Printable.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kiv {
namespace {

struct Range {
   char32_t first;
   char32_t last;
};

constexpr auto harmful = std::to_array<Range>({
    {0x00, 0x1f},    // C0
    {0x7f, 0x9f},    // DEL, C1
    {0x61c, 0x61c},  // what turns the direction
    {0x200e, 0x200f},
    {0x2028, 0x202e},  // line and paragraph separators among them
    {0x2066, 0x2069},
    {0xd800, 0xdfff},
    {0x110000, 0xffffffff},
});

constexpr std::array<char32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};

// How many bytes a character has by its first one; 1 for what cannot be a first one.
std::size_t lengthOf(unsigned char first) {
   return first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : first >= 0xc0 ? 2 : 1;
}

// The character that begins a text and its length; a byte that begins none counts as harmful.
std::pair<char32_t, std::size_t> character(std::string_view text) {
   auto const first = static_cast<unsigned char>(text.front());
   std::size_t const length = lengthOf(first);
   constexpr std::pair<char32_t, std::size_t> none{0, 1};
   if (length == 1 || length > text.size()) {
      return first < 0x80 ? std::pair<char32_t, std::size_t>{first, 1} : none;
   }
   char32_t code = first & (0x7fU >> length);
   for (char const next : text.substr(1, length - 1)) {
      if ((static_cast<unsigned char>(next) & 0xc0U) != 0x80) {
         return none;
      }
      code = (code << 6U) | (static_cast<unsigned char>(next) & 0x3fU);
   }
   return code < smallest[length] || first >= 0xf8 ? none : std::pair{code, length};
}

void appendEscaped(std::string& to, std::string_view bytes) {
   constexpr std::string_view digits = "0123456789abcdef";
   for (char const c : bytes) {
      auto const byte = static_cast<unsigned char>(c);
      to.append("\\x").append(1, digits[byte / 16]).append(1, digits[byte % 16]);
   }
}

}  // namespace

std::string printable(std::string_view text, std::size_t most) {
   constexpr std::string_view cut = "...";
   std::string result;
   std::size_t whole = 0;  // of the result, what leaves room for the mark that it was cut
   while (!text.empty() && result.size() <= most) {
      auto const [code, length] = character(text);
      bool const escape =
          std::ranges::any_of(harmful, [code = code](Range const& r) { return r.first <= code && code <= r.last; });
      escape ? appendEscaped(result, text.substr(0, length)) : void(result.append(text.substr(0, length)));
      whole = result.size() + cut.size() <= most ? result.size() : whole;
      text.remove_prefix(length);
   }
   if (result.size() > most) {
      result.resize(whole);
      result.append(cut);
   }
   return result;
}

}  // namespace kiv
