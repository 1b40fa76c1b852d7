#include "Lumen/MplsLabel.h"

#include "Lumen/TextCursor.h"
#include "Lumen/TextDigits.h"

#include <algorithm>

namespace Lumen {

bool MplsLabel::read(TextCursor& in, MplsLabel& label) {
   U32 value = 0;
   if (!in.decimal(value)) {
      return false;
   }
   label = MplsLabel(value);
   return true;
}

MplsLabel MplsLabel::parse(std::string_view text) {
   MplsLabel label;
   if (!readWhole(text, label)) {
      throw Zam::ParseError("an MPLS label number", text);
   }
   return label;
}

std::size_t MplsLabel::formatTo(char* out) const noexcept {
   return static_cast<std::size_t>(formatDecimal(out, value_) - out);
}

void strepAppend(std::string& out, MplsLabel const& label) {
   Zam::strepAppendNumber(out, U64{label.value()});
}

void strepParse(Zam::StrepReader& in, MplsLabel& label) {
   label = MplsLabel(static_cast<U32>(std::min(in.number(), U64{MplsLabel::luWithdraw} + 1)));
}

}  // namespace Lumen
