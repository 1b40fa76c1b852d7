#pragma once

#include "Lumen/BasicPrefix.h"

namespace Lumen {

template <class Addr>
struct AddrWithMaskMessages;

template <>
struct AddrWithMaskMessages<IpAddr> {
   static constexpr char const* expected = "an IPv4 address with mask a.b.c.d/length";
   static constexpr char const* length = "Lumen::IpAddrWithMask::length > maxLength not allowed";
};

template <>
struct AddrWithMaskMessages<Ip6Addr> {
   static constexpr char const* expected = "an IPv6 address with mask address/length";
   static constexpr char const* length = "Lumen::Ip6AddrWithMask::length > maxLength not allowed";
};

// An interface's address together with the length of its subnet; host bits are meant to be there. Orders by address,
// then length. The default is the zero address with length 0.
template <class Addr>
class KIV_EXPORT BasicAddrWithMask {
 public:
   using AddrType = Addr;
   using Messages = AddrWithMaskMessages<Addr>;

   static constexpr U8 maxLength = Addr::width;
   static constexpr std::size_t maxTextLength = Addr::maxTextLength + 4;

   constexpr BasicAddrWithMask() noexcept = default;
   constexpr BasicAddrWithMask(Addr address, U8 length) : address_(address), length_(length) {
      if (length > maxLength) {
         throw Zam::RangeError(Messages::length);
      }
   }

   constexpr Addr address() const noexcept { return address_; }
   constexpr U8 length() const noexcept { return length_; }
   constexpr BasicPrefix<Addr> subnet() const { return BasicPrefix<Addr>::masked(address_, length_); }

   constexpr bool operator==(BasicAddrWithMask const&) const noexcept = default;
   constexpr std::strong_ordering operator<=>(BasicAddrWithMask const&) const noexcept = default;

   static BasicAddrWithMask parse(std::string_view text);
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   constexpr std::size_t hashValue() const noexcept {
      return Zam::combinedHash(address_.hashValue(), std::size_t{length_});
   }

 private:
   Addr address_;
   U8 length_ = 0;
   std::array<U8, alignof(Addr) - 1> zero_{};  // no padding bytes: these are copied into shared memory
};

extern template class BasicAddrWithMask<IpAddr>;
extern template class BasicAddrWithMask<Ip6Addr>;

}  // namespace Lumen
