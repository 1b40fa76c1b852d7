#pragma once

#include "Lumen/TextCursor.h"
#include "Lumen/TextDigits.h"
#include "Zam/Error.h"

#include <algorithm>

// The text address/length, for the types that are made of the two.
namespace Lumen {

// A length that no U8 holds becomes the largest, which every such type refuses as out of range.
template <class T>
T parseAddrLength(std::string_view text) {
   TextCursor in(text);
   typename T::AddrType address;
   U32 length = 0;
   if (!T::AddrType::read(in, address) || !in.accept('/') || !in.decimal(length) || !in.atEnd()) {
      throw Zam::ParseError(T::Messages::expected, text);
   }
   return T(address, static_cast<U8>(std::min(length, U32{0xff})));
}

template <class T>
std::size_t formatAddrLength(T const& value, char* out) noexcept {
   char* at = out + value.address().formatTo(out);
   *at++ = '/';
   return static_cast<std::size_t>(formatDecimal(at, value.length()) - out);
}

}  // namespace Lumen
