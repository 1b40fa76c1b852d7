#pragma once

#include "Lumen/TextValue.h"
#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <compare>
#include <type_traits>

namespace Lumen {

class TextCursor;

// A 20-bit MPLS label in a word that has room for markers above the labels. The default is the marker for no label;
// anything above the label-withdraw marker is a RangeError. Text and textual form are the decimal number.
class KIV_EXPORT MplsLabel {
 public:
   static constexpr U32 min = 0;
   static constexpr U32 maxLabel = 0xfffff;
   static constexpr U32 noLabel = 0x100000;
   static constexpr U32 luWithdraw = 0x800000;
   static constexpr std::size_t maxTextLength = 10;

   constexpr MplsLabel() noexcept = default;
   explicit constexpr MplsLabel(U32 value) : value_(value) {
      if (value > luWithdraw) {
         throw Zam::RangeError(rangeMessage);
      }
   }

   constexpr U32 value() const noexcept { return value_; }
   constexpr bool isLabel() const noexcept { return value_ <= maxLabel; }

   constexpr bool operator==(MplsLabel const&) const noexcept = default;
   constexpr std::strong_ordering operator<=>(MplsLabel const&) const noexcept = default;

   static MplsLabel parse(std::string_view text);
   // Reads a label at the cursor and leaves the cursor behind it; false when there is none.
   static bool read(TextCursor& in, MplsLabel& label);
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   constexpr std::size_t hashValue() const noexcept { return Zam::mixedHash(value_); }

 private:
   static constexpr char const* rangeMessage =
       "Lumen::MplsLabel::value < Lumen::MplsLabel::min or > Lumen::MplsLabel::luWithdraw not allowed";

   U32 value_ = noLabel;
};

static_assert(sizeof(MplsLabel) == 4 && std::is_trivially_copyable_v<MplsLabel>);
static_assert(std::has_unique_object_representations_v<MplsLabel>);

KIV_EXPORT void strepAppend(std::string& out, MplsLabel const& label);
KIV_EXPORT void strepParse(Zam::StrepReader& in, MplsLabel& label);

}  // namespace Lumen
