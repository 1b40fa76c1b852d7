#pragma once

#include "Lumen/AddressFamily.h"
#include "Lumen/TextValue.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <array>
#include <compare>
#include <type_traits>

namespace Lumen {

class TextCursor;

// An IPv6 address, kept as two words in host order so that it compares and masks word-wise. Parses every form of
// RFC 4291 (no zone), prints RFC 5952: lower case, the longest run of zero groups compressed, IPv4-mapped addresses
// with a dotted tail. The default is "::".
class KIV_EXPORT Ip6Addr {
 public:
   static constexpr AddressFamily addressFamily = AddressFamily::ipv6;
   static constexpr U8 width = 128;
   static constexpr std::size_t maxTextLength = 39;

   constexpr Ip6Addr() noexcept = default;
   constexpr Ip6Addr(U64 hi, U64 lo) noexcept : hi_(hi), lo_(lo) {}
   explicit constexpr Ip6Addr(std::array<U8, 16> const& bytes) noexcept : hi_(word(bytes, 0)), lo_(word(bytes, 8)) {}

   constexpr U64 hi() const noexcept { return hi_; }
   constexpr U64 lo() const noexcept { return lo_; }
   // Network order.
   constexpr std::array<U8, 16> bytes() const noexcept {
      std::array<U8, 16> bytes{};
      for (unsigned i = 0; i < 8; ++i) {
         bytes[i] = static_cast<U8>(hi_ >> (56 - 8 * i));
         bytes[i + 8] = static_cast<U8>(lo_ >> (56 - 8 * i));
      }
      return bytes;
   }
   constexpr bool isZero() const noexcept { return (hi_ | lo_) == 0; }

   // The mask of the leading `length` bits; a length above the width masks nothing out.
   static constexpr Ip6Addr mask(U8 length) noexcept {
      U64 const ones = ~U64{0};
      if (length >= width) {
         return Ip6Addr(ones, ones);
      }
      return length < 64 ? Ip6Addr(~(ones >> length), 0) : Ip6Addr(ones, ~(ones >> (length - 64)));
   }
   constexpr Ip6Addr operator&(Ip6Addr other) const noexcept { return Ip6Addr(hi_ & other.hi_, lo_ & other.lo_); }
   constexpr Ip6Addr operator^(Ip6Addr other) const noexcept { return Ip6Addr(hi_ ^ other.hi_, lo_ ^ other.lo_); }
   constexpr Ip6Addr operator~() const noexcept { return Ip6Addr(~hi_, ~lo_); }

   constexpr bool operator==(Ip6Addr const&) const noexcept = default;
   constexpr std::strong_ordering operator<=>(Ip6Addr const&) const noexcept = default;

   static Ip6Addr parse(std::string_view text);
   // Reads an address at the cursor and leaves the cursor behind it; false when there is none.
   static bool read(TextCursor& in, Ip6Addr& addr) noexcept;
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   constexpr std::size_t hashValue() const noexcept { return Zam::combinedHash(hi_, lo_); }

 private:
   static constexpr U64 word(std::array<U8, 16> const& bytes, std::size_t at) noexcept {
      U64 word = 0;
      for (std::size_t i = at; i < at + 8; ++i) {
         word = word << 8 | bytes[i];
      }
      return word;
   }

   U64 hi_ = 0;
   U64 lo_ = 0;
};

static_assert(sizeof(Ip6Addr) == 16 && std::is_trivially_copyable_v<Ip6Addr>);
static_assert(std::has_unique_object_representations_v<Ip6Addr>);

}  // namespace Lumen
