#include "Lumen/Vni.h"

#include "Lumen/TextCursor.h"
#include "Lumen/TextDigits.h"

#include <algorithm>

namespace Lumen {

Vni Vni::parse(std::string_view text) {
   TextCursor in(text);
   U32 value = 0;
   if (!in.decimal(value) || !in.atEnd()) {
      throw Zam::ParseError("a VNI number", text);
   }
   return Vni(value);
}

std::size_t Vni::formatTo(char* out) const noexcept {
   return static_cast<std::size_t>(formatDecimal(out, value_) - out);
}

void strepAppend(std::string& out, Vni const& vni) {
   Zam::strepAppendNumber(out, U64{vni.value()});
}

void strepParse(Zam::StrepReader& in, Vni& vni) {
   vni = Vni(static_cast<U32>(std::min(in.number(), U64{Vni::max} + 1)));
}

}  // namespace Lumen
