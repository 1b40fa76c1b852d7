#include "cliprint/FormatPrinter.h"

#include <cmath>
#include <limits>

namespace cliprint {

void FormatPrinter::putEscaped(Conversion const& c, std::string_view text) noexcept {
   put(c, plainText(text));
}

void FormatPrinter::putReal(Conversion const& c, double value) noexcept {
   constexpr std::size_t maxDigits = std::numeric_limits<double>::max_exponent10 + 4 + maxFormatPrecision;
   static_assert(maxDigits <= CliPrintBuffer::maxRoom);
   char digits[maxDigits];
   int const precision = c.hasPrecision ? c.precision : 6;
   auto const end = std::to_chars(digits, digits + maxDigits, value, std::chars_format::fixed, precision).ptr;
   if (c.plain) {
      out_.append(std::string_view(digits, end));
      return;
   }
   Conversion shown = c;
   shown.zero = c.zero && std::isfinite(value);
   padded(shown, {digits, end});
}

void FormatPrinter::padded(Conversion const& c, std::string_view text) noexcept {
   S64 const width = c.widthIsArgument ? width_ : c.width;
   bool const left = c.left || width < 0;
   auto const columns = static_cast<std::size_t>(width < 0 ? -width : width);
   std::size_t const blanks = columns > text.size() ? columns - text.size() : 0;
   if (left) {
      out_.append(text);
      out_.fill(' ', blanks);
      return;
   }
   if (c.zero && text.starts_with('-')) {
      out_.append('-');
      text.remove_prefix(1);
   }
   out_.fill(c.zero ? '0' : ' ', blanks);
   out_.append(text);
}

void FormatPrinter::literalWithPercent(Conversion const& c) noexcept {
   std::string_view const text(format_ + c.literal, c.literalLength);
   for (std::size_t i = 0; i < text.size(); ++i) {
      out_.append(text[i]);
      i += text[i] == '%' ? 1 : 0;
   }
}

}  // namespace cliprint
