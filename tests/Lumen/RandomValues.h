#pragma once

#include "Lumen/EthAddr.h"
#include "Lumen/IntfId.h"
#include "Lumen/Ip6AddrWithMask.h"
#include "Lumen/IpAddrWithMask.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/IpGenPrefix.h"
#include "Lumen/MplsLabelOperation.h"
#include "Lumen/RouteDistinguisher.h"
#include "Lumen/Vni.h"
#include "support/Testing.h"

// Random values that crowd where faults are: few distinct bits, runs of zeros and of ones, lengths at the ends, values
// that are nearly the same as others.
namespace Lumen::Test {

class Random {
 public:
   explicit Random(U64 seed) : engine_(seed) {}

   U64 below(U64 bound) { return std::uniform_int_distribution<U64>(0, bound - 1)(engine_); }
   bool chance(U64 in) { return below(in) == 0; }
   U64 bits() { return engine_(); }
   // Sixteen-bit groups, each often all zeros or all ones or of one digit.
   U64 sparse() {
      U64 word = 0;
      for (int i = 0; i < 4; ++i) {
         U64 const kinds[] = {0, 0, 0xffff, below(16), below(0x10000), U64{1} << below(16)};
         word = word << 16 | kinds[below(6)];
      }
      return word;
   }

   template <class T>
   T value();
   template <class Addr>
   U8 length() {
      return static_cast<U8>(below(Addr::width + 1));
   }

 private:
   std::mt19937_64 engine_;
};

// Names put together from few pieces: digit runs with zeros in front, and what other kinds are written with.
template <>
inline IntfId Random::value() {
   switch (below(6)) {
      case 0:
         return IntfId();
      case 1:
         return IntfId::fromFecId(sparse());
      case 2:
         return IntfId::fromTunnelId(sparse());
      case 3:
         return IntfId::fromNexthopGroup(static_cast<U32>(sparse()));
      default:
         break;
   }
   constexpr std::string_view pieces[] = {"0",        "00",       "1",     "9",   "10", "/",  ".",
                                          "Ethernet", "FecId(",   "Name(", "0x1", ")",  "))", "eth",
                                          "E",        "\xc3\xa9", "'",     "\\",  "a",  "0x", "NexthopGroup("};
   std::string name;
   do {
      name += pieces[below(std::size(pieces))];
   } while (!chance(4));
   return IntfId::named(std::string_view(name).substr(0, IntfId::maxNameLength));
}

template <class T>
T Random::value() {
   if constexpr (std::is_same_v<T, IpAddr>) {
      return IpAddr(static_cast<U32>(chance(2) ? bits() : sparse()));
   } else if constexpr (std::is_same_v<T, Ip6Addr>) {
      U64 const low = below(3) << 48 | (chance(2) ? 0xffff00000000U : 0) | (sparse() & 0xffffffffU);
      return chance(8) ? Ip6Addr(0, low) : Ip6Addr(sparse(), sparse());
   } else if constexpr (std::is_same_v<T, IpGenAddr>) {
      return chance(9) ? IpGenAddr() : chance(2) ? IpGenAddr(value<IpAddr>()) : IpGenAddr(value<Ip6Addr>());
   } else if constexpr (std::is_same_v<T, Prefix> || std::is_same_v<T, Ip6Prefix>) {
      using Addr = typename T::AddrType;
      return chance(20) ? T() : T::masked(value<Addr>(), length<Addr>());
   } else if constexpr (std::is_same_v<T, IpGenPrefix>) {
      return chance(2) ? IpGenPrefix(value<Prefix>()) : IpGenPrefix(value<Ip6Prefix>());
   } else if constexpr (std::is_same_v<T, IpAddrWithMask>) {
      return {value<IpAddr>(), length<IpAddr>()};
   } else if constexpr (std::is_same_v<T, Ip6AddrWithMask>) {
      return {value<Ip6Addr>(), length<Ip6Addr>()};
   } else if constexpr (std::is_same_v<T, EthAddr>) {
      auto const bytes = std::bit_cast<std::array<U8, 8>>(sparse());
      return EthAddr({bytes[0], bytes[1], bytes[2], bytes[3], bytes[4], bytes[5]});
   } else if constexpr (std::is_same_v<T, MplsLabel>) {
      return MplsLabel(static_cast<U32>(chance(4) ? MplsLabel::luWithdraw - below(2) : below(0x100001)));
   } else if constexpr (std::is_same_v<T, MplsLabelOperation>) {
      T operation(static_cast<MplsLabelOperation::Operation>(below(4)), {});
      for (U64 left = chance(2) ? below(3) : below(T::maxLabels + 1); left != 0; --left) {
         operation.labelAppend(value<MplsLabel>());
      }
      return operation;
   } else if constexpr (std::is_same_v<T, RouteDistinguisher>) {
      auto const number = static_cast<U16>(sparse());
      return chance(3)   ? T::ofAs2(static_cast<U16>(sparse()), static_cast<U32>(sparse()))
             : chance(2) ? T::ofIpAddr(value<IpAddr>(), number)
                         : T::ofAs4(static_cast<U32>(sparse()), number);
   } else {
      return Vni(static_cast<U32>(below(Vni::max + 1)));
   }
}

}  // namespace Lumen::Test
