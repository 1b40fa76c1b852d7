#include "Zam/Error.h"

#include <cstdio>
#include <cstdlib>

namespace Zam {

RangeError::~RangeError() = default;
ParseError::~ParseError() = default;

ParseError::ParseError(std::string_view expected, std::string_view text, std::size_t at)
    : ParseError(std::string("expected ")
                     .append(expected)
                     .append(", found \"")
                     .append(text)
                     .append("\"")
                     .append(at != 0 ? " at " + std::to_string(at) : "")) {}

void assertionFailed(char const* message, char const* source, char const* function) noexcept {
   std::fprintf(stderr, "assertion failed: %s, source %s%s%s\n", message, source, *function != '\0' ? ", " : "",
                function);
   std::abort();
}

}  // namespace Zam
