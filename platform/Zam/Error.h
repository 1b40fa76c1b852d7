#pragma once

#include "Zam/Export.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

// Three kinds of failure, never mixed. A refusal that a user must see is data and has no type here. A value outside its
// type's range is a RangeError with a fixed message; text that is not what a parser reads is a ParseError. A
// programming error fails an assertion, which names its message and source on stderr and ends the process.
namespace Zam {

class KIV_EXPORT RangeError : public std::range_error {
 public:
   explicit RangeError(char const* message) : std::range_error(message) {}
   ~RangeError() override;
};

class KIV_EXPORT ParseError : public std::invalid_argument {
 public:
   // `expected` is the form, `text` what was met instead, `at` its place in the whole text.
   ParseError(std::string_view expected, std::string_view text, std::size_t at = 0);
   explicit ParseError(std::string const& message) : std::invalid_argument(message) {}
   ~ParseError() override;
};

[[noreturn]] KIV_EXPORT void assertionFailed(char const* message, char const* source, char const* function) noexcept;

// Checks in every build: the assertions are part of the library's contract, not a debugging aid.
// `source` is the unit as the system names it ("Kiv/CliSupport"), `function` the operation's signature.
constexpr void assertThat(bool holds, char const* message, char const* source, char const* function = "") {
   if (!holds) [[unlikely]] {
      assertionFailed(message, source, function);
   }
}

}  // namespace Zam
