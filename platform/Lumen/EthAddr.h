#pragma once

#include "Lumen/TextValue.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <array>
#include <compare>
#include <type_traits>

namespace Lumen {

// A MAC address. Text "aa:bb:cc:dd:ee:ff": six groups of two hex digits, printed in lower case, read in either.
class KIV_EXPORT EthAddr {
 public:
   static constexpr std::size_t maxTextLength = 17;

   constexpr EthAddr() noexcept = default;
   explicit constexpr EthAddr(std::array<U8, 6> const& bytes) noexcept : bytes_(bytes) {}

   constexpr std::array<U8, 6> const& bytes() const noexcept { return bytes_; }
   constexpr bool isZero() const noexcept { return bytes_ == std::array<U8, 6>{}; }

   constexpr bool operator==(EthAddr const&) const noexcept = default;
   constexpr std::strong_ordering operator<=>(EthAddr const&) const noexcept = default;

   static EthAddr parse(std::string_view text);
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   constexpr std::size_t hashValue() const noexcept {
      U64 word = 0;
      for (U8 const byte : bytes_) {
         word = word << 8 | byte;
      }
      return Zam::mixedHash(word);
   }

 private:
   std::array<U8, 6> bytes_{};
};

static_assert(sizeof(EthAddr) == 6 && std::is_trivially_copyable_v<EthAddr>);
static_assert(std::has_unique_object_representations_v<EthAddr>);

}  // namespace Lumen
