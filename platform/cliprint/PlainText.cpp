#include "cliprint/PlainText.h"

#include <array>

namespace cliprint {

namespace {

struct LeadByte {
   unsigned char first, last;  // the range of lead bytes
   unsigned char length;
   unsigned char secondMin, secondMax;
};

// Well-formed UTF-8: the second byte's range keeps overlong forms, surrogates and too large values out.
constexpr LeadByte leadBytes[] = {
    {0xc2, 0xdf, 2, 0x80, 0xbf}, {0xe0, 0xe0, 3, 0xa0, 0xbf}, {0xe1, 0xec, 3, 0x80, 0xbf}, {0xed, 0xed, 3, 0x80, 0x9f},
    {0xee, 0xef, 3, 0x80, 0xbf}, {0xf0, 0xf0, 4, 0x90, 0xbf}, {0xf1, 0xf3, 4, 0x80, 0xbf}, {0xf4, 0xf4, 4, 0x80, 0x8f},
};

struct Range {
   char32_t first, last;
};

constexpr Range harmful[] = {
    {0x00, 0x1f},                        // C0
    {0x7f, 0x9f},                        // DEL, C1
    {0x61c, 0x61c},                      // what turns the direction
    {0x200e, 0x200f}, {0x2028, 0x202e},  // line and paragraph separators among them
    {0x2066, 0x2069},
};

bool isHarmful(char32_t code) noexcept {
   return std::ranges::any_of(harmful, [code](Range const& r) { return r.first <= code && code <= r.last; });
}

// The length of the well-formed sequence beyond ASCII at the start of the text; 0 when there is none.
std::size_t sequenceLength(std::string_view text) noexcept {
   auto const byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
   auto const* const lead = std::ranges::find_if(
       leadBytes, [&](LeadByte const& entry) { return byte(0) >= entry.first && byte(0) <= entry.last; });
   if (lead == std::end(leadBytes) || text.size() < lead->length || byte(1) < lead->secondMin ||
       byte(1) > lead->secondMax) {
      return 0;
   }
   for (std::size_t i = 2; i < lead->length; ++i) {
      if ((byte(i) & 0xc0U) != 0x80) {
         return 0;
      }
   }
   return lead->length;
}

void appendEscaped(std::string& to, std::string_view bytes) {
   constexpr std::string_view digits = "0123456789abcdef";
   for (char const c : bytes) {
      auto const byte = static_cast<unsigned char>(c);
      to.append("\\x").append(1, digits[byte / 16]).append(1, digits[byte % 16]);
   }
}

}  // namespace

Character firstCharacter(std::string_view text) noexcept {
   auto const first = static_cast<unsigned char>(text.front());
   if (first < 0x80) {
      return {1, true, isHarmful(first)};
   }
   std::size_t const length = sequenceLength(text);
   if (length == 0) {
      return {1, false, true};
   }
   char32_t code = first & (0x7fU >> length);
   for (char const next : text.substr(1, length - 1)) {
      code = (code << 6U) | (static_cast<unsigned char>(next) & 0x3fU);
   }
   return {length, true, isHarmful(code)};
}

std::string plainText(std::string_view text, std::size_t most) {
   constexpr std::string_view cut = "...";
   std::string result;
   std::size_t whole = 0;  // of the result, what leaves room for the mark that it was cut
   while (!text.empty() && result.size() <= most) {
      Character const next = firstCharacter(text);
      std::string_view const bytes = text.substr(0, next.length);
      next.isHarmful ? appendEscaped(result, bytes) : void(result.append(bytes));
      whole = most - std::min(most, result.size()) >= cut.size() ? result.size() : whole;
      text.remove_prefix(next.length);
   }
   if (result.size() > most) {
      result.resize(whole);
      result.append(cut);
   }
   return result;
}

}  // namespace cliprint
