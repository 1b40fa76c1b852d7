#pragma once

#include "Lumen/EthAddr.h"
#include "Lumen/IntfId.h"
#include "Lumen/Ip6AddrWithMask.h"
#include "Lumen/IpAddrWithMask.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/IpGenPrefix.h"
#include "Lumen/MplsLabelOperation.h"
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
   BasicPrefix<Addr> prefix() {
      return chance(20) ? BasicPrefix<Addr>() : BasicPrefix<Addr>::masked(value<Addr>(), length<Addr>());
   }
   template <class Addr>
   U8 length() {
      return static_cast<U8>(below(Addr::width + 1));
   }

 private:
   std::mt19937_64 engine_;
};

template <>
inline IpAddr Random::value() {
   return IpAddr(static_cast<U32>(chance(2) ? bits() : sparse()));
}
template <>
inline Ip6Addr Random::value() {
   if (chance(8)) {
      return Ip6Addr(0, below(3) << 48 | (chance(2) ? 0xffff00000000U : 0) | (sparse() & 0xffffffffU));
   }
   return Ip6Addr(sparse(), sparse());
}
template <>
inline IpGenAddr Random::value() {
   return chance(9) ? IpGenAddr() : chance(2) ? IpGenAddr(value<IpAddr>()) : IpGenAddr(value<Ip6Addr>());
}
template <>
inline Prefix Random::value() {
   return prefix<IpAddr>();
}
template <>
inline Ip6Prefix Random::value() {
   return prefix<Ip6Addr>();
}
template <>
inline IpGenPrefix Random::value() {
   return chance(2) ? IpGenPrefix(value<Prefix>()) : IpGenPrefix(value<Ip6Prefix>());
}
template <>
inline IpAddrWithMask Random::value() {
   return {value<IpAddr>(), length<IpAddr>()};
}
template <>
inline Ip6AddrWithMask Random::value() {
   return {value<Ip6Addr>(), length<Ip6Addr>()};
}
template <>
inline EthAddr Random::value() {
   U64 const word = sparse();
   auto const byte = [word](int i) { return static_cast<U8>(word >> (8 * i)); };
   return EthAddr({byte(0), byte(1), byte(2), byte(3), byte(4), byte(5)});
}
template <>
inline MplsLabel Random::value() {
   return MplsLabel(static_cast<U32>(chance(4) ? MplsLabel::luWithdraw - below(2) : below(0x100001)));
}
template <>
inline MplsLabelOperation Random::value() {
   MplsLabelOperation operation(static_cast<MplsLabelOperation::Operation>(below(4)), {});
   for (U64 left = chance(2) ? below(3) : below(MplsLabelOperation::maxLabels + 1); left != 0; --left) {
      operation.labelAppend(value<MplsLabel>());
   }
   return operation;
}
template <>
inline Vni Random::value() {
   return Vni(static_cast<U32>(below(Vni::max + 1)));
}
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
   // Names put together from few pieces: digit runs with zeros in front, and what other kinds are written with.
   constexpr std::string_view pieces[] = {"0",        "00",       "1",     "9",   "10", "/",  ".",
                                          "Ethernet", "FecId(",   "Name(", "0x1", ")",  "))", "eth",
                                          "E",        "\xc3\xa9", "'",     "\\",  "a",  "0x", "NexthopGroup("};
   std::string name;
   do {
      name += pieces[below(std::size(pieces))];
   } while (!chance(4));
   return IntfId::named(std::string_view(name).substr(0, IntfId::maxNameLength));
}

}  // namespace Lumen::Test
