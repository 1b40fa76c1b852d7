#pragma once

#include "Lumen/Ip6Addr.h"
#include "Lumen/IpAddr.h"
#include "Lumen/TextValue.h"
#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <array>
#include <compare>
#include <type_traits>

namespace Lumen {

template <class Addr>
struct PrefixMessages;

template <>
struct PrefixMessages<IpAddr> {
   static constexpr char const* expected = "an IPv4 prefix a.b.c.d/length";
   static constexpr char const* hostBits = "Lumen::Prefix::address & ~mask() != 0 not allowed";
   static constexpr char const* length = "Lumen::Prefix::length > maxLength not allowed";
};

template <>
struct PrefixMessages<Ip6Addr> {
   static constexpr char const* expected = "an IPv6 prefix address/length";
   static constexpr char const* hostBits = "Lumen::Ip6Prefix::address & ~mask() != 0 not allowed";
   static constexpr char const* length = "Lumen::Ip6Prefix::length > maxLength not allowed";
};

// An address and the number of its leading bits that count; the other bits are zero, which every way to make one
// checks. The default is the null prefix, "no prefix": its length field is all ones, its address zero, its text
// "none"; it contains nothing and no prefix contains it.
//
// The order: addresses compare on the bits that both prefixes cover, a shorter prefix comes before those it contains,
// the null prefix comes last. With host bits zero that is the order of (address, length), which is what is compared.
template <class Addr>
class KIV_EXPORT BasicPrefix {
 public:
   using AddrType = Addr;
   using Messages = PrefixMessages<Addr>;

   static constexpr U8 maxLength = Addr::width;
   static constexpr U8 nullLength = 0xff;
   static constexpr std::string_view nullText = "none";
   static constexpr std::size_t maxTextLength = Addr::maxTextLength + 4;

   constexpr BasicPrefix() noexcept = default;
   constexpr BasicPrefix(Addr address, U8 length) : address_(address), length_(length) {
      if (length > maxLength) {
         throw Zam::RangeError(Messages::length);
      }
      if (!(address & ~Addr::mask(length)).isZero()) {
         throw Zam::RangeError(Messages::hostBits);
      }
   }
   // The prefix of this length that holds the address.
   static constexpr BasicPrefix masked(Addr address, U8 length) {
      return BasicPrefix(address & Addr::mask(length), length);
   }

   constexpr Addr address() const noexcept { return address_; }
   constexpr U8 length() const noexcept { return length_; }
   constexpr bool isNullPrefix() const noexcept { return length_ == nullLength; }

   // The prefix of this length that contains this one; a prefix that is no longer than that (the null prefix too) is
   // returned as it is.
   constexpr BasicPrefix truncated(U8 length) const noexcept {
      if (isNullPrefix() || length >= length_) {
         return *this;
      }
      return masked(address_, length);
   }

   constexpr bool contains(BasicPrefix const& other) const noexcept {
      return !other.isNullPrefix() && length_ <= other.length_ && covers(other.address_);
   }
   constexpr bool contains(Addr address) const noexcept { return !isNullPrefix() && covers(address); }

   constexpr bool operator==(BasicPrefix const&) const noexcept = default;
   constexpr std::strong_ordering operator<=>(BasicPrefix const& other) const noexcept {
      if constexpr (Addr::width == 32) {
         return orderWord() <=> other.orderWord();
      } else {
         auto const byAddress = orderAddress() <=> other.orderAddress();
         return byAddress != 0 ? byAddress : length_ <=> other.length_;
      }
   }

   static BasicPrefix parse(std::string_view text);
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   constexpr std::size_t hashValue() const noexcept {
      if constexpr (Addr::width == 32) {
         return Zam::mixedHash(orderWord());
      } else {
         return Zam::combinedHash(address_.hashValue(), std::size_t{length_});
      }
   }
   // A word that orders prefixes as they order, but for IPv6 prefixes that agree in their first 64 bits.
   constexpr U64 sortWord() const noexcept {
      if constexpr (Addr::width == 32) {
         return orderWord();
      } else {
         return orderAddress().hi();
      }
   }

 private:
   constexpr bool covers(Addr address) const noexcept { return ((address_ ^ address) & Addr::mask(length_)).isZero(); }
   // The null prefix orders as if its address were all ones: no branch, and nothing compares above it.
   constexpr Addr orderAddress() const noexcept { return isNullPrefix() ? Addr::mask(maxLength) : address_; }
   // A template, so that only the family whose order fits a word has it.
   template <class A = Addr>
   constexpr U64 orderWord() const noexcept {
      return U64{A(orderAddress()).value()} << 8 | length_;
   }

   Addr address_;
   U8 length_ = nullLength;
   std::array<U8, alignof(Addr) - 1> zero_{};  // no padding bytes: prefixes are copied into shared memory
};

extern template class BasicPrefix<IpAddr>;
extern template class BasicPrefix<Ip6Addr>;

}  // namespace Lumen
