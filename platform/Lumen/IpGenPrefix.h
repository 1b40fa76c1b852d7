#pragma once

#include "Lumen/Ip6Prefix.h"
#include "Lumen/Prefix.h"

namespace Lumen {

// A prefix of either family, held as 16 address bytes in network order (an IPv4 address in the first four, the rest
// zero), a length and a family. The default is the null prefix: family unknown, text "none".
//
// The order is by address bytes, then length, the null prefix last; the family decides only between two prefixes that
// are alike in both, so that the order agrees with ==. byAddressAndLength() is the order that leaves the family out.
class KIV_EXPORT IpGenPrefix {
 public:
   static constexpr std::size_t maxTextLength = Ip6Prefix::maxTextLength;

   constexpr IpGenPrefix() noexcept = default;
   constexpr IpGenPrefix(Prefix const& prefix) noexcept  // NOLINT(google-explicit-constructor): every prefix is one
       : address_(U64{prefix.address().value()} << 32, 0),
         length_(prefix.length()),
         family_(prefix.isNullPrefix() ? AddressFamily::unknown : AddressFamily::ipv4) {}
   constexpr IpGenPrefix(Ip6Prefix const& prefix) noexcept  // NOLINT(google-explicit-constructor)
       : address_(prefix.address()),
         length_(prefix.length()),
         family_(prefix.isNullPrefix() ? AddressFamily::unknown : AddressFamily::ipv6) {}

   constexpr AddressFamily family() const noexcept { return family_; }
   constexpr bool isNullPrefix() const noexcept { return length_ == Prefix::nullLength; }
   constexpr std::array<U8, 16> addressBytes() const noexcept { return address_.bytes(); }
   constexpr U8 length() const noexcept { return length_; }

   // The prefix of that family; the null prefix when this one is of the other.
   constexpr Prefix prefix() const {
      return family_ == AddressFamily::ipv4 ? Prefix(IpAddr(static_cast<U32>(address_.hi() >> 32)), length_) : Prefix();
   }
   constexpr Ip6Prefix prefix6() const {
      return family_ == AddressFamily::ipv6 ? Ip6Prefix(address_, length_) : Ip6Prefix();
   }

   constexpr bool operator==(IpGenPrefix const&) const noexcept = default;
   constexpr std::strong_ordering operator<=>(IpGenPrefix const& other) const noexcept {
      auto const order = compareAddressAndLength(other);
      return order != 0 ? order : family_ <=> other.family_;
   }
   // A less-than in which 0.0.0.0/0 and ::/0 are equivalent.
   constexpr std::weak_ordering byAddressAndLength(IpGenPrefix const& other) const noexcept {
      return compareAddressAndLength(other);
   }

   static IpGenPrefix parse(std::string_view text);
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   constexpr std::size_t hashValue() const noexcept {
      return Zam::combinedHash(address_.hashValue(), std::size_t{length_}, static_cast<std::size_t>(family_));
   }

 private:
   constexpr std::strong_ordering compareAddressAndLength(IpGenPrefix const& other) const noexcept {
      if (isNullPrefix() != other.isNullPrefix()) {
         return isNullPrefix() <=> other.isNullPrefix();
      }
      auto const byAddress = address_ <=> other.address_;
      return byAddress != 0 ? byAddress : length_ <=> other.length_;
   }

   Ip6Addr address_;
   U8 length_ = Prefix::nullLength;
   AddressFamily family_ = AddressFamily::unknown;
   std::array<U8, 6> zero_{};  // no padding bytes: prefixes are copied into shared memory
};

static_assert(sizeof(IpGenPrefix) == 24 && std::is_trivially_copyable_v<IpGenPrefix>);
static_assert(std::has_unique_object_representations_v<IpGenPrefix>);

}  // namespace Lumen
