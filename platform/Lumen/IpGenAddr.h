#pragma once

#include "Lumen/Ip6Addr.h"
#include "Lumen/IpAddr.h"

namespace Lumen {

// An address of either family, or none: the default is empty, with empty text. Two are equal only when their families
// are; the order is by family (empty, IPv4, IPv6), then by address.
class KIV_EXPORT IpGenAddr {
 public:
   static constexpr std::size_t maxTextLength = Ip6Addr::maxTextLength;

   constexpr IpGenAddr() noexcept = default;
   constexpr IpGenAddr(IpAddr addr) noexcept  // NOLINT(google-explicit-constructor): every address is one of these
       : family_(AddressFamily::ipv4),
         address_(U64{addr.value()} << 32, 0) {}
   constexpr IpGenAddr(Ip6Addr addr) noexcept  // NOLINT(google-explicit-constructor)
       : family_(AddressFamily::ipv6),
         address_(addr) {}

   constexpr AddressFamily family() const noexcept { return family_; }
   constexpr bool isEmpty() const noexcept { return family_ == AddressFamily::unknown; }
   constexpr bool isZero() const noexcept { return address_.isZero(); }  // empty, 0.0.0.0 or ::

   // The address of that family; zero when this one is of the other or empty.
   constexpr IpAddr ip() const noexcept {
      return family_ == AddressFamily::ipv4 ? IpAddr(static_cast<U32>(address_.hi() >> 32)) : IpAddr();
   }
   constexpr Ip6Addr ip6() const noexcept { return family_ == AddressFamily::ipv6 ? address_ : Ip6Addr(); }

   constexpr bool operator==(IpGenAddr const&) const noexcept = default;
   constexpr std::strong_ordering operator<=>(IpGenAddr const&) const noexcept = default;

   static IpGenAddr parse(std::string_view text);
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   constexpr std::size_t hashValue() const noexcept {
      return Zam::combinedHash(address_.hashValue(), static_cast<std::size_t>(family_));
   }

 private:
   AddressFamily family_ = AddressFamily::unknown;
   std::array<U8, 7> zero_{};  // no padding bytes: vias are copied into shared memory
   Ip6Addr address_;           // an IPv4 address is in the first four bytes
};

static_assert(sizeof(IpGenAddr) == 24 && std::is_trivially_copyable_v<IpGenAddr>);
static_assert(std::has_unique_object_representations_v<IpGenAddr>);

}  // namespace Lumen
