#pragma once

#include "cliprint/CliPrintBuffer.h"
#include "cliprint/Format.h"
#include "cliprint/PlainText.h"

#include <charconv>
#include <concepts>
#include <cstddef>
#include <string_view>

namespace cliprint {

// Carries a parsed format out into a print buffer, argument by argument. Numbers are converted in the buffer itself;
// only what needs padding goes through a local one. Texts come out plain (PlainText.h), but for an OwnText. Allocates
// nothing for texts that are printable ASCII.
class FormatPrinter {
 public:
   FormatPrinter(CliPrintBuffer& out, char const* format) noexcept : out_(out), format_(format) {}

   [[gnu::always_inline]] void literal(Conversion const& c) noexcept {
      if (c.hasPercent) [[unlikely]] {
         literalWithPercent(c);
      } else {
         out_.append(std::string_view(format_ + c.literal, c.literalLength));
      }
   }

   template <class T>
   void argument(Conversion const& c, T const& value) noexcept {
      literal(c);
      convert(c, value);
   }

 private:
   template <class T>
   void convert(Conversion const& c, T const& value) noexcept {
      if constexpr (StandsForText<T>) {
         convert(c, value.textValue());
      } else if constexpr (std::same_as<T, OwnText>) {
         put(c, value.text);
      } else if constexpr (std::convertible_to<T const&, char const*>) {
         char const* const text = value;
         putText(c, text != nullptr ? std::string_view(text) : std::string_view());
      } else if constexpr (TextLike<T>) {
         putText(c, std::string_view(value));
      } else if constexpr (SelfFormatting<T>) {
         putSelfFormatting(c, value);
      } else if constexpr (std::same_as<T, char>) {
         put(c, std::string_view(&value, 1));
      } else if constexpr (std::same_as<T, double>) {
         putReal(c, value);
      } else {
         putInteger(c, value);
      }
   }

   // What somebody may have chosen who means harm.
   void putText(Conversion const& c, std::string_view text) noexcept {
      if (isPrintableAscii(text)) [[likely]] {
         put(c, text);
      } else {
         putEscaped(c, text);
      }
   }
   void put(Conversion const& c, std::string_view text) noexcept {
      if (c.plain) {
         out_.append(text);
      } else {
         padded(c, c.hasPrecision && c.letter == 's' ? text.substr(0, c.precision) : text);
      }
   }

   template <SelfFormatting T>
   void putSelfFormatting(Conversion const& c, T const& value) noexcept {
      static_assert(T::maxTextLength <= CliPrintBuffer::maxRoom);
      if (c.plain) {
         char* const to = out_.room(T::maxTextLength);
         out_.endIs(to + value.formatTo(to));
      } else {
         char text[T::maxTextLength];
         put(c, {text, static_cast<std::size_t>(value.formatTo(text))});
      }
   }

   template <std::integral T>
   void putInteger(Conversion const& c, T value) noexcept {
      constexpr std::size_t maxDigits = 24;
      if constexpr (std::same_as<T, int>) {
         if (c.letter == '*') {
            width_ = value;
            return;
         }
      }
      int const base = c.letter == 'x' ? 16 : 10;
      if (c.plain) {
         char* const to = out_.room(maxDigits);
         out_.endIs(std::to_chars(to, to + maxDigits, value, base).ptr);
      } else {
         char digits[maxDigits];
         padded(c, {digits, std::to_chars(digits, digits + maxDigits, value, base).ptr});
      }
   }

   KIV_EXPORT void putEscaped(Conversion const& c, std::string_view text) noexcept;
   KIV_EXPORT void putReal(Conversion const& c, double value) noexcept;
   KIV_EXPORT void padded(Conversion const& c, std::string_view text) noexcept;
   KIV_EXPORT void literalWithPercent(Conversion const& c) noexcept;

   CliPrintBuffer& out_;
   char const* format_;
   S64 width_ = 0;  // of the next conversion, when an argument gives it
};

template <EmptyFormat Empty, class... Args>
void print(CliPrintBuffer& out, BasicFormat<Empty, Args...> const& format, Args const&... args) noexcept {
   FormatPrinter printer(out, format.text());
   std::size_t next = 0;
   (printer.argument(format[next++], args), ...);
   printer.literal(format.tail());
}

}  // namespace cliprint
