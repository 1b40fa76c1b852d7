#include "state/text/Schema.h"

#include "state/text/JsonWriter.h"

#include <simdjson.h>

namespace state {
namespace {

using Element = simdjson::dom::element;

std::string onOneLine(Element element);

template <class Items, class Text>
std::string between(char open, Items const& items, char close, Text&& text) {
   Schema::Members all;
   std::string out(1, open);
   for (auto const item : items) {
      out.append(out.size() > 1 ? ", " : "").append(text(item));
   }
   return out + close;
}

std::string onOneLine(Element element) {
   if (element.is_object()) {
      return between('{', element.get_object().value_unsafe(), '}',
                     [](auto const& member) { return jsonQuoted(member.key) + ": " + onOneLine(member.value); });
   }
   if (element.is_array()) {
      return between('[', element.get_array().value_unsafe(), ']', onOneLine);
   }
   return simdjson::minify(element);
}

// In one line where it fits.
void append(std::string& out, std::string_view head, Element element, std::size_t indent) {
   constexpr std::size_t width = 120;
   constexpr std::size_t step = 2;
   out.append(indent, ' ').append(head);
   std::string const line = onOneLine(element);
   if (indent + head.size() + line.size() < width || (!element.is_object() && !element.is_array())) {
      out += line;
      return;
   }
   std::string_view separator = "\n";
   out += line.front();
   auto const item = [&](std::string const& key, Element value) {
      out += std::exchange(separator, ",\n");
      append(out, key, value, indent + step);
   };
   if (element.is_object()) {
      simdjson::dom::object const object = element.get_object().value_unsafe();
      for (auto const member : object) {
         item(jsonQuoted(member.key) + ": ", member.value);
      }
   } else {
      simdjson::dom::array const array = element.get_array().value_unsafe();
      for (Element const value : array) {
         item("", value);
      }
   }
   out.append("\n").append(indent, ' ') += line.back();
}

}  // namespace

std::string Schema::document(std::string_view members) const {
   Members definitions;
   for (auto const& [name, text] : definitions_) {
      definitions.add(jsonQuoted(name) + ":{" + text + "}");
   }
   simdjson::dom::parser parser;
   std::string const text = "{\"$schema\":\"https://json-schema.org/draft/2020-12/schema\"," + std::string(members) +
                            ",\"$defs\":{" + definitions.text() + "}}";
   std::string out;
   append(out, "", parser.parse(text).value(), 0);
   return out + "\n";
}

}  // namespace state
