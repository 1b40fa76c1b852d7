#include "Zam/Toggle.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

namespace Zam {

namespace {

constexpr char const* directoryVariable = "KIV_TOGGLE_DIR";
constexpr char const* usualDirectory = "/etc/kiv/toggles";
constexpr std::string_view blanks = " \t\r\n";
constexpr std::size_t maxFileSize = 64 * std::size_t{1024};

// Reads the object from front to back; every operation takes its part, or says that it is not there.
class ToggleReader {
 public:
   explicit ToggleReader(std::string_view text) : rest_(text) {}

   // The toggle's state; empty when the object does not have it, or is none.
   std::optional<bool> state(std::string_view toggle) {
      std::optional<bool> found;
      if (!accept("{")) {
         return {};
      }
      for (bool isFirst = true; !accept("}"); isFirst = false) {
         if (!isFirst && !accept(",")) {
            return {};
         }
         auto const name = quoted();
         auto const value = name && accept(":") ? boolean() : std::nullopt;
         if (!value) {
            return {};
         }
         found = *name == toggle ? value : found;
      }
      skipBlanks();
      return rest_.empty() ? found : std::nullopt;
   }

 private:
   void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size())); }
   bool accept(std::string_view word) {
      skipBlanks();
      bool const met = rest_.starts_with(word);
      rest_.remove_prefix(met ? word.size() : 0);
      return met;
   }
   // Names are words: nothing in them needs an escape.
   std::optional<std::string_view> quoted() {
      if (!accept("\"")) {
         return {};
      }
      auto const end = rest_.find_first_of("\"\\\n");
      if (end == std::string_view::npos || rest_[end] != '"') {
         return {};
      }
      auto const name = rest_.substr(0, end);
      rest_.remove_prefix(end + 1);
      return name;
   }
   std::optional<bool> boolean() {
      if (accept("true")) {
         return true;
      }
      return accept("false") ? std::optional(false) : std::nullopt;
   }

   std::string_view rest_;
};

std::string contents(std::string_view file) {
   char const* const set = std::getenv(directoryVariable);
   std::ifstream in(std::string(set != nullptr ? set : usualDirectory).append("/").append(file), std::ios::binary);
   std::string text(maxFileSize + 1, '\0');
   in.read(text.data(), static_cast<std::streamsize>(text.size()));
   text.resize(static_cast<std::size_t>(in.gcount()));
   return text.size() > maxFileSize ? std::string() : text;
}

}  // namespace

bool toggleState(std::string_view text, std::string_view toggle, bool byDefault) noexcept {
   return ToggleReader(text).state(toggle).value_or(byDefault);
}

bool getToggleState(std::string_view file, std::string_view toggle, bool byDefault) noexcept {
   try {
      return toggleState(contents(file), toggle, byDefault);
   } catch (std::exception const&) {
      return byDefault;
   }
}

}  // namespace Zam
