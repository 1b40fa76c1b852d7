#include "support/StrictJson.h"

#include <simdjson.h>

#include <algorithm>
#include <stdexcept>

namespace testsupport {

namespace {

JsonValue valueOf(simdjson::dom::element const& element) {
   JsonValue value;
   if (element.is_object()) {
      for (auto const& [key, member] : simdjson::dom::object(element)) {
         if (value.find(key) != nullptr) {
            throw std::runtime_error("key twice");
         }
         value.members.push_back({std::string(key), valueOf(member)});
      }
   } else if (element.is_array()) {
      for (auto const& member : simdjson::dom::array(element)) {
         value.members.push_back({"", valueOf(member)});
      }
   }
   value.text = element.is_string() ? std::string(std::string_view(element)) : simdjson::minify(element);
   return value;
}

}  // namespace

JsonValue const* JsonValue::find(std::string_view key) const {
   auto const member = std::ranges::find(members, key, &JsonMember::key);
   return member != members.end() ? &member->value : nullptr;
}

std::optional<JsonValue> StrictJson::parse(std::string_view text) {
   try {
      simdjson::dom::parser parser;
      return valueOf(parser.parse(simdjson::padded_string(text)));
   } catch (std::exception const&) {
      return std::nullopt;
   }
}

bool StrictJson::isUtf8(std::string_view text) {
   return simdjson::validate_utf8(text.data(), text.size());
}

}  // namespace testsupport
