#pragma once

#include "Lumen/AddressFamily.h"
#include "Lumen/TextValue.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <compare>
#include <type_traits>

namespace Lumen {

class TextCursor;

// An IPv4 address, kept as a number in host order so that it compares and masks as one word. Its text is strict dotted
// decimal: four octets without leading zeros. The default is 0.0.0.0.
class KIV_EXPORT IpAddr {
 public:
   static constexpr AddressFamily addressFamily = AddressFamily::ipv4;
   static constexpr U8 width = 32;
   static constexpr std::size_t maxTextLength = 15;

   constexpr IpAddr() noexcept = default;
   explicit constexpr IpAddr(U32 value) noexcept : value_(value) {}

   constexpr U32 value() const noexcept { return value_; }
   constexpr bool isZero() const noexcept { return value_ == 0; }

   // The mask of the leading `length` bits; a length above the width masks nothing out.
   static constexpr IpAddr mask(U8 length) noexcept { return IpAddr(length < width ? ~(~U32{0} >> length) : ~U32{0}); }
   constexpr IpAddr operator&(IpAddr other) const noexcept { return IpAddr(value_ & other.value_); }
   constexpr IpAddr operator^(IpAddr other) const noexcept { return IpAddr(value_ ^ other.value_); }
   constexpr IpAddr operator~() const noexcept { return IpAddr(~value_); }

   constexpr bool operator==(IpAddr const&) const noexcept = default;
   constexpr std::strong_ordering operator<=>(IpAddr const&) const noexcept = default;

   static IpAddr parse(std::string_view text);
   // Reads an address at the cursor and leaves the cursor behind it; false when there is none.
   static bool read(TextCursor& in, IpAddr& addr) noexcept;
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   constexpr std::size_t hashValue() const noexcept { return Zam::mixedHash(value_); }

 private:
   U32 value_ = 0;
};

static_assert(sizeof(IpAddr) == 4 && std::is_trivially_copyable_v<IpAddr>);
static_assert(std::has_unique_object_representations_v<IpAddr>);

}  // namespace Lumen
