#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace state {

// A JSON Schema in the making: the definitions that it refers to, each told once.
class Schema {
 public:
   // What stands between brackets, with commas.
   class Members {
    public:
      void add(std::string_view member) { text_.append(text_.empty() ? "" : ",").append(member); }
      std::string const& text() const { return text_; }

    private:
      std::string text_;
   };

   // A reference to the definition of that name, whose members `text()` tells the first time.
   template <class Text>
   std::string defined(std::string_view name, Text&& text) {
      if (auto const [place, isNew] = definitions_.try_emplace(std::string(name)); isNew) {
         place->second = text();
      }
      return "\"$ref\":\"#/$defs/" + std::string(name) + "\"";
   }

   // The document, laid out in lines, of the members of its root.
   std::string document(std::string_view members) const;

 private:
   std::map<std::string, std::string, std::less<>> definitions_;
};

}  // namespace state
