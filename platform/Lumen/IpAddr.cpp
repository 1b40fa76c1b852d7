#include "Lumen/IpAddr.h"

#include "Lumen/TextCursor.h"
#include "Zam/Error.h"

#include <array>
#include <cstring>

namespace Lumen {
namespace {

struct OctetText {
   std::array<char, 3> digits;
   U8 size;
};

constexpr auto octetTexts = [] {
   std::array<OctetText, 256> texts{};
   for (unsigned i = 0; i < texts.size(); ++i) {
      auto& [digits, size] = texts[i];
      for (unsigned power = i < 10 ? 1 : i < 100 ? 10 : 100; power != 0; power /= 10) {
         digits[size++] = static_cast<char>('0' + i / power % 10);
      }
   }
   return texts;
}();

// Always moves three characters; they are within maxTextLength even where the last octet starts latest.
char* formatOctet(char* out, U32 octet) noexcept {
   auto const& [digits, size] = octetTexts[octet & 0xff];
   std::memcpy(out, digits.data(), digits.size());
   return out + size;
}

}  // namespace

// Works on a copy of the cursor, which can stay in registers.
bool IpAddr::read(TextCursor& from, IpAddr& addr) noexcept {
   TextCursor in = from;
   U32 value = 0;
   for (int i = 0; i < 4; ++i) {
      U32 octet = 0;
      if ((i != 0 && !in.accept('.')) || !in.decimal(octet) || octet > 255) {
         return false;
      }
      value = value << 8 | octet;
   }
   from = in;
   addr = IpAddr(value);
   return true;
}

IpAddr IpAddr::parse(std::string_view text) {
   IpAddr addr;
   if (!readWhole(text, addr)) {
      throw Zam::ParseError("an IPv4 address a.b.c.d", text);
   }
   return addr;
}

std::size_t IpAddr::formatTo(char* out) const noexcept {
   char* at = formatOctet(out, value_ >> 24);
   for (int shift = 16; shift >= 0; shift -= 8) {
      *at++ = '.';
      at = formatOctet(at, value_ >> shift);
   }
   return static_cast<std::size_t>(at - out);
}

}  // namespace Lumen
