#include "Lumen/RouteDistinguisher.h"

#include "Lumen/TextCursor.h"
#include "Lumen/TextDigits.h"
#include "Zam/Error.h"

#include <algorithm>
#include <limits>

namespace Lumen {
namespace {

constexpr U32 max2 = std::numeric_limits<U16>::max();
constexpr U64 max4 = std::numeric_limits<U32>::max();
constexpr char const* expected = "a route distinguisher as:number or a.b.c.d:number";

// Decimal, without leading zeros; up to `max`, a RangeError beyond.
U32 number(std::string_view digits, U64 max, std::string_view whole) {
   if (digits.empty() || !std::ranges::all_of(digits, TextCursor::isDigit) ||
       (digits.size() > 1 && digits.front() == '0')) {
      throw Zam::ParseError(expected, whole);
   }
   U64 value = 0;
   auto const [at, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
   if (error != std::errc() || value > max) {
      throw Zam::RangeError("Lumen::RouteDistinguisher::number > max not allowed");
   }
   return static_cast<U32>(value);
}

}  // namespace

RouteDistinguisher RouteDistinguisher::parse(std::string_view text) {
   auto const colon = text.find(':');
   if (colon == std::string_view::npos) {
      throw Zam::ParseError(expected, text);
   }
   auto const administrator = text.substr(0, colon);
   auto const assigned = text.substr(colon + 1);
   auto const number2 = [&] { return static_cast<U16>(number(assigned, max2, text)); };
   if (IpAddr addr; readWhole(administrator, addr)) {
      return ofIpAddr(addr, number2());
   }
   if (auto const dot = administrator.find('.'); dot != std::string_view::npos) {
      U32 const high = number(administrator.substr(0, dot), max2, text);
      U32 const low = number(administrator.substr(dot + 1), max2, text);
      return ofAs4(high << 16 | low, number2());
   }
   U32 const as = number(administrator, max4, text);
   return as <= max2 ? ofAs2(static_cast<U16>(as), number(assigned, max4, text)) : ofAs4(as, number2());
}

std::size_t RouteDistinguisher::formatTo(char* out) const noexcept {
   bool const has4ByteNumber = type() == Type::as2;
   auto const administrator = static_cast<U32>(word_ >> (has4ByteNumber ? 32 : 16) & (has4ByteNumber ? max2 : max4));
   char* at = out;
   if (type() == Type::ipAddr) {
      at += IpAddr(administrator).formatTo(at);
   } else {
      at = formatText(at, type() == Type::as4 && administrator <= max2 ? "0." : "");
      at = formatDecimal(at, administrator);
   }
   *at++ = ':';
   return static_cast<std::size_t>(formatDecimal(at, static_cast<U32>(word_ & (has4ByteNumber ? max4 : max2))) - out);
}

}  // namespace Lumen
