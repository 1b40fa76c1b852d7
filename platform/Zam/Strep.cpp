#include "Zam/Strep.h"

#include "Zam/TypeUse.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace Zam {

namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

// How one byte is written between the quotes.
struct EscapedByte {
   std::array<char, 4> text;
   U8 length;

   std::string_view view() const noexcept { return {text.data(), length}; }
};

constexpr EscapedByte escaped(char c) noexcept {
   switch (c) {
      case '\'':
      case '\\':
         return {{'\\', c}, 2};
      case '\n':
         return {{'\\', 'n'}, 2};
      case '\r':
         return {{'\\', 'r'}, 2};
      case '\t':
         return {{'\\', 't'}, 2};
      default:
         break;
   }
   if (c >= ' ' && c <= '~') {
      return {{c}, 1};
   }
   auto const byte = static_cast<unsigned char>(c);
   return {{'\\', 'x', hexDigits[byte >> 4U], hexDigits[byte & 0xfU]}, 4};
}

// The byte that an escape stands for; any byte for text that is no escape, the caller compares.
char unescaped(std::string_view text) noexcept {
   if (text.size() < 2 || text[0] != '\\') {
      return text.empty() ? '\0' : text[0];
   }
   switch (text[1]) {
      case 'n':
         return '\n';
      case 'r':
         return '\r';
      case 't':
         return '\t';
      case 'x':
         break;
      default:
         return text[1];
   }
   unsigned value = 0;
   auto const digits = text.substr(2, 2);
   std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
   return static_cast<char>(value);
}

bool isDigit(char c) noexcept {
   return c >= '0' && c <= '9';
}

bool isWordChar(char c) noexcept {
   return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

std::size_t lengthOf(std::string_view text, bool (*matches)(char)) noexcept {
   return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), matches) - text.begin());
}

template <class Number>
void appendNumber(std::string& out, Number value) {
   std::array<char, 32> buffer;
   auto const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
   out.append(buffer.data(), end);
}

}  // namespace

void StrepReader::fail(std::string_view expected) const {
   throw ParseError(expected, rest_, size_ - rest_.size());
}

void StrepReader::fail(ParseError const& inner) const {
   auto const at = size_ - rest_.size();
   throw ParseError(inner.what() + (at != 0 ? " at " + std::to_string(at) : ""));
}

void StrepReader::failEnumerator(std::type_index enumeration) const {
   fail("an enumerator of " + typeName(enumeration));
}

std::string_view StrepReader::take(std::size_t count) noexcept {
   auto const taken = rest_.substr(0, count);
   rest_.remove_prefix(count);
   return taken;
}

bool StrepReader::accept(std::string_view literal) noexcept {
   bool const next = rest_.starts_with(literal);
   rest_.remove_prefix(next ? literal.size() : 0);
   return next;
}

void StrepReader::expect(std::string_view literal) {
   if (!accept(literal)) {
      fail(literal);
   }
}

void StrepReader::expectEnd() const {
   if (!rest_.empty()) {
      fail("the end of the text");
   }
}

std::string StrepReader::quoted() {
   expect("'");
   std::string text;
   while (!accept("'")) {
      char const byte = unescaped(rest_);
      expect(escaped(byte).view());
      text += byte;
   }
   return text;
}

U64 StrepReader::number() {
   auto const digits = rest_.substr(0, lengthOf(rest_, isDigit));
   if (digits.empty() || (digits[0] == '0' && digits.size() > 1)) {
      fail("a number");
   }
   U64 value = 0;
   if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ec != std::errc()) {
      throwNumberRange();
   }
   take(digits.size());
   return value;
}

S64 StrepReader::signedNumber() {
   StrepReader ahead = *this;
   bool const negative = ahead.accept("-");
   U64 const magnitude = ahead.number();
   if (negative && magnitude == 0) {
      fail("a number");
   }
   constexpr auto positiveMax = static_cast<U64>(std::numeric_limits<S64>::max());
   if (magnitude > positiveMax + (negative ? 1 : 0)) {
      throwNumberRange();
   }
   *this = ahead;
   return static_cast<S64>(negative ? 0 - magnitude : magnitude);
}

double StrepReader::real() {
   double value = 0;
   auto const [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
   auto const length = static_cast<std::size_t>(end - rest_.data());
   if (error != std::errc() || rest_.substr(0, length) != valueToStrep(value)) {
      fail("a floating point number");
   }
   take(length);
   return value;
}

std::string_view StrepReader::acceptWord() noexcept {
   return take(lengthOf(rest_, isWordChar));
}

void strepAppendQuoted(std::string& out, std::string_view text) {
   out += '\'';
   for (char const c : text) {
      out += escaped(c).view();
   }
   out += '\'';
}

void strepAppendNumber(std::string& out, U64 value) {
   appendNumber(out, value);
}

void strepAppendNumber(std::string& out, S64 value) {
   appendNumber(out, value);
}

void throwNumberRange() {
   throw RangeError("Zam: number beyond the range of its type not allowed");
}

void strepAppend(std::string& out, double value) {
   if (std::isnan(value)) {
      out += "nan";
      return;
   }
   auto const start = out.size();
   appendNumber(out, value);
   if (std::isfinite(value) && out.find_first_of(".e", start) == std::string::npos) {
      out += ".0";
   }
}

void strepParse(StrepReader& in, double& value) {
   value = in.real();
}

}  // namespace Zam
