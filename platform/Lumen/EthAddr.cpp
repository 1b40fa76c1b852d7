#include "Lumen/EthAddr.h"

#include "Lumen/TextCursor.h"
#include "Lumen/TextDigits.h"
#include "Zam/Error.h"

namespace Lumen {

EthAddr EthAddr::parse(std::string_view text) {
   TextCursor in(text);
   std::array<U8, 6> bytes{};
   bool good = true;
   for (std::size_t i = 0; i < bytes.size(); ++i) {
      U32 byte = 0;
      good = good && (i == 0 || in.accept(':')) && in.hex(byte, 2) == 2;
      bytes[i] = static_cast<U8>(byte);
   }
   if (!good || !in.atEnd()) {
      throw Zam::ParseError("a MAC address aa:bb:cc:dd:ee:ff", text);
   }
   return EthAddr(bytes);
}

std::size_t EthAddr::formatTo(char* out) const noexcept {
   char* at = out;
   for (U8 const byte : bytes_) {
      if (at != out) {
         *at++ = ':';
      }
      at = formatHexPair(at, byte);
   }
   return maxTextLength;
}

}  // namespace Lumen
