#pragma once

#include "Zam/Export.h"
#include "cliprint/CliPrintBuffer.h"

#include <charconv>
#include <concepts>
#include <string_view>

// JSON values in a print buffer. Strings are escaped and always valid: a byte that is not part of well-formed UTF-8
// (overlong forms, surrogates and values above U+10FFFF are not) becomes U+FFFD, and what is harmful to a terminal
// (PlainText.h) is written \uNNNN.
namespace cliprint {

KIV_EXPORT void jsonAppend(CliPrintBuffer& out, std::string_view text) noexcept;
// The shortest text that reads back as the same value; null when there is none.
KIV_EXPORT void jsonAppend(CliPrintBuffer& out, double value) noexcept;

inline void jsonAppend(CliPrintBuffer& out, std::same_as<bool> auto value) noexcept {
   out.append(value ? std::string_view("true") : std::string_view("false"));
}

template <std::integral T>
requires(!std::same_as<T, bool>) void jsonAppend(CliPrintBuffer& out, T value) noexcept {
   constexpr std::size_t maxDigits = 20;
   char* const to = out.room(maxDigits);
   out.endIs(std::to_chars(to, to + maxDigits, value).ptr);
}

}  // namespace cliprint
