#include "Zam/Error.h"

#include <cstdio>
#include <cstdlib>

namespace Zam {

RangeError::~RangeError() = default;
ParseError::~ParseError() = default;

ParseError::ParseError(std::string_view expected, std::string_view text)
    : std::invalid_argument(std::string("expected ").append(expected).append(", found \"").append(text).append("\"")) {}

void assertionFailed(char const* message, char const* source, char const* function) noexcept {
   std::fprintf(stderr, "assertion failed: %s, source %s%s%s\n", message, source, *function != '\0' ? ", " : "",
                function);
   std::abort();
}

}  // namespace Zam
