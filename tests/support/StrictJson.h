#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// JSON as strangers read it, to judge what writes ours: one document by the letter of its grammar, well-formed UTF-8,
// no whole number beyond 64 bits, and no key twice.
namespace testsupport {

struct JsonMember;

struct JsonValue {
   std::string text;                 // of a string what it says, otherwise as JSON
   std::vector<JsonMember> members;  // of an object or, with empty keys, an array

   JsonValue const* find(std::string_view key) const;
};

struct JsonMember {
   std::string key;
   JsonValue value;
};

struct StrictJson {
   static std::optional<JsonValue> parse(std::string_view text);
   static bool isUtf8(std::string_view text);
};

}  // namespace testsupport
