#include "cliprint/JsonText.h"

#include "cliprint/PlainText.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace cliprint {

namespace {

// The top bit of each byte that is zero; exact for the lowest such byte, which is all that the test below needs.
constexpr U64 zeroBytes(U64 word) {
   return (word - everyByte(1)) & ~word & everyByte(0x80);
}

// Whether eight bytes hold only ASCII that stands for itself.
bool isClean(U64 word) {
   return unprintable(word) == 0 && zeroBytes(word ^ everyByte('"')) == 0 && zeroBytes(word ^ everyByte('\\')) == 0;
}

bool isClean(char c) {
   auto const byte = static_cast<unsigned char>(c);
   return byte >= 0x20 && byte < 0x7f && c != '"' && c != '\\';
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

constexpr std::string_view hex = "0123456789abcdef";

void appendControl(CliPrintBuffer& out, unsigned char byte) {
   constexpr std::string_view shortForms("btn\0fr", 6);  // 0x08 to 0x0d; 0x0b has none
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

// What a terminal would take for more than text has at most 16 bits.
void appendCode(CliPrintBuffer& out, std::string_view character) {
   bool const isShort = character.size() == 2;
   unsigned code = static_cast<unsigned char>(character[0]) & (isShort ? 0x1fU : 0x0fU);
   for (char const next : character.substr(1)) {
      code = (code << 6U) | (static_cast<unsigned char>(next) & 0x3fU);
   }
   out.append(std::string_view("\\u"));
   for (unsigned shift = 16; shift != 0; shift -= 4) {
      out.append(hex[(code >> (shift - 4)) & 0x0fU]);
   }
}

// Writes the character at the start of the text, which does not stand for itself; returns how many bytes it has.
std::size_t appendEscaped(CliPrintBuffer& out, std::string_view text) {
   auto const next = firstCharacter(text);
   std::string_view const bytes = text.substr(0, next.length);
   char const c = text.front();
   if (!next.isUtf8) {
      out.append(std::string_view("\xef\xbf\xbd"));
   } else if (next.isHarmful) {
      next.length == 1 ? appendControl(out, static_cast<unsigned char>(c)) : appendCode(out, bytes);
   } else {
      if (c == '"' || c == '\\') {
         out.append('\\');
      }
      out.append(bytes);
   }
   return next.length;
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
