#include "state/text/JsonLocator.h"

#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace state {
namespace {

// Follows the grammar and stops at the first byte that does not; position() is that byte.
class Scanner {
 public:
   explicit Scanner(std::string_view text) : text_(text) {}

   bool document() {
      if (!value(0)) {
         return false;
      }
      blanks();
      return at_ == text_.size();
   }
   std::size_t position() const { return at_; }

 private:
   static constexpr int maxDepth = 1024;

   char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }
   void blanks() { at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size()); }
   bool skip(char c) {
      if (peek() != c) {
         return false;
      }
      ++at_;
      return true;
   }
   bool word(std::string_view expected) {
      return std::all_of(expected.begin(), expected.end(), [this](char c) { return skip(c); });
   }

   bool value(int depth) {
      blanks();
      switch (depth < maxDepth ? peek() : '\0') {
         case '{':
            return items('}', [&] { return member(depth + 1); });
         case '[':
            return items(']', [&] { return value(depth + 1); });
         case '"':
            return string();
         case 't':
            return word("true");
         case 'f':
            return word("false");
         case 'n':
            return word("null");
         default:
            return number();
      }
   }

   template <class Item>
   bool items(char close, Item&& item) {
      ++at_;
      blanks();
      if (skip(close)) {
         return true;
      }
      do {
         if (!item()) {
            return false;
         }
         blanks();
      } while (skip(','));
      return skip(close);
   }

   bool member(int depth) {
      blanks();
      if (!string()) {
         return false;
      }
      blanks();
      return skip(':') && value(depth);
   }

   bool string() {
      if (!skip('"')) {
         return false;
      }
      while (peek() != '"') {
         if (static_cast<unsigned char>(peek()) < ' ' || (skip('\\') ? !escape() : !skip(peek()))) {
            return false;
         }
      }
      return skip('"');
   }

   bool escape() {
      if (!skip('u')) {
         return std::string_view("\"\\/bfnrt").find(peek()) != std::string_view::npos && skip(peek());
      }
      return hexDigit() && hexDigit() && hexDigit() && hexDigit();
   }
   bool hexDigit() { return std::isxdigit(static_cast<unsigned char>(peek())) != 0 && skip(peek()); }

   bool digits() {
      std::size_t const start = at_;
      while (peek() >= '0' && peek() <= '9') {
         ++at_;
      }
      return at_ != start;
   }

   // Also false, at its start, for a number too large for its type.
   bool number() {
      std::size_t const start = at_;
      skip('-');
      if (!skip('0') && !digits()) {
         return false;
      }
      bool const whole = peek() != '.' && peek() != 'e' && peek() != 'E';
      if ((skip('.') && !digits()) || ((skip('e') || skip('E')) && ((skip('+') || skip('-')), !digits()))) {
         return false;
      }
      std::string_view const text = text_.substr(start, at_ - start);
      if (whole ? fits<long long>(text) || fits<unsigned long long>(text) : fits<double>(text)) {
         return true;
      }
      at_ = start;
      return false;
   }
   template <class T>
   static bool fits(std::string_view text) {
      T number{};
      return std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc();
   }

   std::string_view text_;
   std::size_t at_ = 0;
};

std::string lineAndColumn(std::string_view text, std::size_t position) {
   std::string_view const before = text.substr(0, position);
   auto const line = std::count(before.begin(), before.end(), '\n') + 1;
   std::size_t const lineStart = before.rfind('\n') + 1;
   return "line " + std::to_string(line) + ", column " + std::to_string(position - lineStart + 1);
}

}  // namespace

std::string whereNotJson(std::string_view text) {
   // No newline is inside a longer UTF-8 sequence, so a line can be looked at by itself.
   for (std::size_t start = 0; start < text.size();) {
      std::size_t const end = std::min(text.find('\n', start), text.size() - 1) + 1;
      if (!simdjson::validate_utf8(text.data() + start, end - start)) {
         return lineAndColumn(text, start);
      }
      start = end;
   }
   Scanner scanner(text);
   return scanner.document() ? std::string() : lineAndColumn(text, scanner.position());
}

}  // namespace state
