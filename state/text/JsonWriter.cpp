#include "state/text/JsonWriter.h"

#include <simdjson.h>

#include <algorithm>

namespace state {
namespace {

// How many bytes at the head of a text are one well-formed character of UTF-8; 0 when none are.
std::size_t characterAt(std::string_view text) {
   constexpr std::size_t longest = 4;
   for (std::size_t size = 1; size <= std::min(longest, text.size()); ++size) {
      if (simdjson::validate_utf8(text.data(), size)) {
         return size;
      }
   }
   return 0;
}

std::string wellFormed(std::string_view text) {
   std::string out;
   while (!text.empty()) {
      std::size_t const size = characterAt(text);
      out += size != 0 ? text.substr(0, size) : "\xef\xbf\xbd";
      text.remove_prefix(std::max<std::size_t>(size, 1));
   }
   return out;
}

}  // namespace

std::string jsonQuoted(std::string_view text) {
   constexpr std::string_view hex = "0123456789abcdef";
   if (!simdjson::validate_utf8(text)) {
      return jsonQuoted(wellFormed(text));
   }
   std::string out = "\"";
   for (char const c : text) {
      auto const byte = static_cast<unsigned char>(c);
      if (byte < ' ') {
         out.append("\\u00").append({hex[byte >> 4U], hex[byte & 15U]});
         continue;
      }
      if (c == '"' || c == '\\') {
         out += '\\';
      }
      out += c;
   }
   return out + '"';
}

}  // namespace state
