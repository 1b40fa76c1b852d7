#pragma once

#include "Lumen/IpAddr.h"
#include "Lumen/TextValue.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <compare>
#include <type_traits>

namespace Lumen {

// What makes the routes of one VPN distinct from those of others (RFC 4364): an administrator, which is an AS number or
// an IPv4 address, and a number that it assigned. Type 0 has a 2-byte AS number and a 4-byte number, type 1 an address
// and a 2-byte number, type 2 a 4-byte AS number and a 2-byte number. The default is 0:0 of type 0.
//
// Text "65000:100", "192.0.2.1:100", "65536:100". An AS number below 65536 in type 2 is written in two halves,
// "0.65000:100", and any AS number of type 2 is read in that form too; so every text reads back as the value it is of.
class KIV_EXPORT RouteDistinguisher {
 public:
   enum class Type : U8 { as2 = 0, ipAddr = 1, as4 = 2 };

   static constexpr std::size_t maxTextLength = 21;

   constexpr RouteDistinguisher() noexcept = default;
   static constexpr RouteDistinguisher ofAs2(U16 as, U32 number) noexcept {
      return RouteDistinguisher(Type::as2, U64{as} << 32 | number);
   }
   static constexpr RouteDistinguisher ofIpAddr(IpAddr addr, U16 number) noexcept {
      return RouteDistinguisher(Type::ipAddr, U64{addr.value()} << 16 | number);
   }
   static constexpr RouteDistinguisher ofAs4(U32 as, U16 number) noexcept {
      return RouteDistinguisher(Type::as4, U64{as} << 16 | number);
   }

   constexpr Type type() const noexcept { return static_cast<Type>(word_ >> 48); }
   // As on the wire, read in network order.
   constexpr U64 value() const noexcept { return word_; }

   constexpr bool operator==(RouteDistinguisher const&) const noexcept = default;
   constexpr std::strong_ordering operator<=>(RouteDistinguisher const&) const noexcept = default;

   static RouteDistinguisher parse(std::string_view text);
   std::size_t formatTo(char* out) const noexcept;
   std::string stringValue() const { return textOf(*this); }
   constexpr std::size_t hashValue() const noexcept { return Zam::mixedHash(word_); }

 private:
   constexpr RouteDistinguisher(Type type, U64 value) noexcept : word_(U64{static_cast<U8>(type)} << 48 | value) {}

   U64 word_ = 0;
};

static_assert(sizeof(RouteDistinguisher) == 8 && std::is_trivially_copyable_v<RouteDistinguisher>);
static_assert(std::has_unique_object_representations_v<RouteDistinguisher>);

}  // namespace Lumen
