#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// A JSON reader for tests, written from the grammar and independent of what writes our JSON: it accepts one document,
// nothing but white space around it, and refuses whatever the grammar does not have, duplicate keys and ill-formed
// UTF-8.
namespace testsupport {

struct JsonMember;

struct JsonValue {
   enum class Kind { null, boolean, number, string, array, object };

   Kind kind = Kind::null;
   std::string text;                 // of a number as written, of a string decoded; "true" or "false"
   std::vector<JsonMember> members;  // of an array with empty keys

   inline JsonValue const* find(std::string_view key) const;
};

struct JsonMember {
   std::string key;
   JsonValue value;
};

inline JsonValue const* JsonValue::find(std::string_view key) const {
   for (JsonMember const& member : members) {
      if (member.key == key) {
         return &member.value;
      }
   }
   return nullptr;
}

class StrictJson {
 public:
   static std::optional<JsonValue> parse(std::string_view text) {
      StrictJson reader(text);
      JsonValue value;
      if (!isUtf8(text) || !reader.value(value)) {
         return std::nullopt;
      }
      reader.blanks();
      return reader.rest_.empty() ? std::optional(std::move(value)) : std::nullopt;
   }

   static bool isUtf8(std::string_view text) {
      for (std::size_t i = 0; i < text.size();) {
         auto const lead = static_cast<unsigned char>(text[i]);
         std::size_t const length = lead < 0x80        ? 1
                                    : lead >> 5U == 6  ? 2
                                    : lead >> 4U == 14 ? 3
                                    : lead >> 3U == 30 ? 4
                                                       : 0;
         if (length == 0 || i + length > text.size()) {
            return false;
         }
         std::uint32_t point = length == 1 ? lead : lead & (0xffU >> (length + 1));
         for (std::size_t j = 1; j < length; ++j) {
            auto const byte = static_cast<unsigned char>(text[i + j]);
            if (byte >> 6U != 2) {
               return false;
            }
            point = (point << 6U) | (byte & 0x3fU);
         }
         constexpr std::uint32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
         if (point < least[length] || point > 0x10ffff || (point >= 0xd800 && point < 0xe000)) {
            return false;
         }
         i += length;
      }
      return true;
   }

 private:
   explicit StrictJson(std::string_view text) : rest_(text) {}

   bool take(std::string_view literal) {
      if (!rest_.starts_with(literal)) {
         return false;
      }
      rest_.remove_prefix(literal.size());
      return true;
   }
   void blanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size())); }
   char peek() const { return rest_.empty() ? '\0' : rest_.front(); }

   bool value(JsonValue& out) {
      blanks();
      switch (peek()) {
         case '{':
            return container(out, JsonValue::Kind::object, '}');
         case '[':
            return container(out, JsonValue::Kind::array, ']');
         case '"':
            out.kind = JsonValue::Kind::string;
            return string(out.text);
         default:
            return word(out) || number(out);
      }
   }
   bool word(JsonValue& out) {
      for (std::string_view const text : {"null", "true", "false"}) {
         if (take(text)) {
            out.kind = text == "null" ? JsonValue::Kind::null : JsonValue::Kind::boolean;
            out.text = text;
            return true;
         }
      }
      return false;
   }
   bool container(JsonValue& out, JsonValue::Kind kind, char end) {
      rest_.remove_prefix(1);
      out.kind = kind;
      blanks();
      if (take({&end, 1})) {
         return true;
      }
      do {
         std::string key;
         if (kind == JsonValue::Kind::object) {
            blanks();
            if (!string(key) || out.find(key) != nullptr) {
               return false;
            }
            blanks();
            if (!take(":")) {
               return false;
            }
         }
         JsonMember& member = out.members.emplace_back();
         member.key = std::move(key);
         if (!value(member.value)) {
            return false;
         }
         blanks();
      } while (take(","));
      return take({&end, 1});
   }
   std::size_t digits() {
      std::size_t const count = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
      rest_.remove_prefix(count);
      return count;
   }
   bool number(JsonValue& out) {
      std::string_view const begin = rest_;
      take("-");
      if (!take("0") && digits() == 0) {
         return false;
      }
      if (take(".") && digits() == 0) {
         return false;
      }
      if (take("e") || take("E")) {
         take("+") || take("-");
         if (digits() == 0) {
            return false;
         }
      }
      out.kind = JsonValue::Kind::number;
      out.text = begin.substr(0, begin.size() - rest_.size());
      return true;
   }
   bool string(std::string& out) {
      if (!take("\"")) {
         return false;
      }
      while (!rest_.empty() && peek() != '"') {
         if (take("\\")) {
            if (!escape(out)) {
               return false;
            }
            continue;
         }
         if (static_cast<unsigned char>(peek()) < 0x20) {
            return false;
         }
         out += peek();
         rest_.remove_prefix(1);
      }
      return take("\"");
   }
   // Surrogate pairs are left out: nothing of ours writes them.
   bool escape(std::string& out) {
      constexpr std::string_view letters = "\"\\/bfnrt";
      constexpr std::string_view meaning = "\"\\/\b\f\n\r\t";
      if (std::size_t const i = letters.find(peek()); !rest_.empty() && i != std::string_view::npos) {
         out += meaning[i];
         rest_.remove_prefix(1);
         return true;
      }
      if (!take("u") || rest_.size() < 4 || rest_.substr(0, 4).find_first_not_of("0123456789abcdefABCDEF") < 4) {
         return false;
      }
      auto const point = std::stoul(std::string(rest_.substr(0, 4)), nullptr, 16);
      rest_.remove_prefix(4);
      out += static_cast<char>(point);
      return point < 0x80;
   }

   std::string_view rest_;
};

}  // namespace testsupport
