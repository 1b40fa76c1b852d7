#include "cliprint/JsonText.h"

#include "Zam/Int.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace cliprint {

namespace {

constexpr U64 everyByte(U8 value) {
   return value * U64{0x0101010101010101};
}

// The top bit of each byte that is zero; exact for the lowest such byte, which is all that the test below needs.
constexpr U64 zeroBytes(U64 word) {
   return (word - everyByte(1)) & ~word & everyByte(0x80);
}

// Whether eight bytes hold only ASCII that stands for itself.
bool isClean(U64 word) {
   U64 const control = (word - everyByte(0x20)) & ~word;
   return ((word | control) & everyByte(0x80)) == 0 && zeroBytes(word ^ everyByte('"')) == 0 &&
          zeroBytes(word ^ everyByte('\\')) == 0;
}

bool isClean(char c) {
   auto const byte = static_cast<unsigned char>(c);
   return byte >= 0x20 && byte < 0x80 && c != '"' && c != '\\';
}

U64 wordAt(char const* bytes) {
   U64 word = 0;
   std::memcpy(&word, bytes, sizeof word);
   return word;
}

// Whether the whole text stands for itself; the last word overlaps the one before it.
bool isClean(std::string_view text) {
   if (text.size() < sizeof(U64)) {
      return std::ranges::all_of(text, [](char c) { return isClean(c); });
   }
   char const* const last = text.data() + text.size() - sizeof(U64);
   for (char const* at = text.data(); at < last; at += sizeof(U64)) {
      if (!isClean(wordAt(at))) {
         return false;
      }
   }
   return isClean(wordAt(last));
}

// How much of the text stands for itself.
std::size_t cleanLength(std::string_view text) {
   std::size_t clean = 0;
   while (clean + sizeof(U64) <= text.size() && isClean(wordAt(text.data() + clean))) {
      clean += sizeof(U64);
   }
   while (clean < text.size() && isClean(text[clean])) {
      ++clean;
   }
   return clean;
}

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

// The length of the well-formed sequence beyond ASCII at the start of the text; 0 when there is none.
std::size_t sequenceLength(std::string_view text) {
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

void appendControl(CliPrintBuffer& out, unsigned char byte) {
   constexpr std::string_view shortForms("btn\0fr", 6);  // 0x08 to 0x0d; 0x0b has none
   constexpr std::string_view hex = "0123456789abcdef";
   char const shortForm = byte >= 0x08 && byte <= 0x0d ? shortForms[byte - 0x08U] : '\0';
   out.append('\\');
   if (shortForm != '\0') {
      out.append(shortForm);
      return;
   }
   out.append(std::string_view("u00"));
   out.append(hex[byte >> 4U]);
   out.append(hex[byte & 0x0fU]);
}

// Writes the character at the start of the text, which does not stand for itself; returns how many bytes it has.
std::size_t appendEscaped(CliPrintBuffer& out, std::string_view text) {
   char const c = text.front();
   if (static_cast<unsigned char>(c) >= 0x80) {
      std::size_t const length = sequenceLength(text);
      out.append(length != 0 ? text.substr(0, length) : std::string_view("\xef\xbf\xbd"));
      return std::max<std::size_t>(length, 1);
   }
   if (c == '"' || c == '\\') {
      out.append('\\');
      out.append(c);
   } else {
      appendControl(out, static_cast<unsigned char>(c));
   }
   return 1;
}

void appendPieces(CliPrintBuffer& out, std::string_view text) {
   out.append('"');
   for (;;) {
      std::size_t const clean = cleanLength(text);
      out.append(text.substr(0, clean));
      text.remove_prefix(clean);
      if (text.empty()) {
         break;
      }
      text.remove_prefix(appendEscaped(out, text));
   }
   out.append('"');
}

}  // namespace

void jsonAppend(CliPrintBuffer& out, std::string_view text) noexcept {
   if (text.size() > CliPrintBuffer::maxRoom - 2 || !isClean(text)) {
      appendPieces(out, text);
      return;
   }
   char* to = out.room(text.size() + 2);
   *to++ = '"';
   to = CliPrintBuffer::copied(to, text);
   *to++ = '"';
   out.endIs(to);
}

void jsonAppend(CliPrintBuffer& out, double value) noexcept {
   constexpr std::size_t maxDigits = 32;
   if (!std::isfinite(value)) {
      out.append(std::string_view("null"));
      return;
   }
   char* const to = out.room(maxDigits);
   out.endIs(std::to_chars(to, to + maxDigits, value).ptr);
}

}  // namespace cliprint
