#pragma once

#include "Lumen/TextValue.h"
#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <compare>
#include <type_traits>

namespace Lumen {

// A VXLAN network identifier, 24 bits; a RangeError above. Text and textual form are the decimal number.
class KIV_EXPORT Vni {
 public:
   static constexpr U32 max = 0xffffff;
   static constexpr std::size_t maxTextLength = 10;

   constexpr Vni() noexcept = default;
   explicit constexpr Vni(U32 value) : value_(value) {
      if (value > max) {
         throw Zam::RangeError(rangeMessage);
      }
   }

   constexpr U32 value() const noexcept { return value_; }

   constexpr bool operator==(Vni const&) const noexcept = default;
   constexpr std::strong_ordering operator<=>(Vni const&) const noexcept = default;

   static Vni parse(std::string_view text);
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   constexpr std::size_t hashValue() const noexcept { return Zam::mixedHash(value_); }

 private:
   static constexpr char const* rangeMessage = "Lumen::Vni::value > Lumen::Vni::max not allowed";

   U32 value_ = 0;
};

static_assert(sizeof(Vni) == 4 && std::is_trivially_copyable_v<Vni>);
static_assert(std::has_unique_object_representations_v<Vni>);

KIV_EXPORT void strepAppend(std::string& out, Vni const& vni);
KIV_EXPORT void strepParse(Zam::StrepReader& in, Vni& vni);

}  // namespace Lumen
