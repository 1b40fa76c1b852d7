#pragma once

#include "Ip/Status.h"
#include "Ip6/Status.h"
#include "Kiv/common/Legend.h"
#include "Lumen/AddressFamily.h"
#include "Lumen/Ip6AddrWithMask.h"
#include "Lumen/Ip6Prefix.h"
#include "Lumen/IpAddrWithMask.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/IpGenPrefix.h"
#include "Lumen/Prefix.h"
#include "Routing/Hardware/Status.h"
#include "Routing/RouteType.h"
#include "Routing6/Hardware/Status.h"
#include "Vault/Fib.h"
#include "Vault/RouteStatus.h"

// What differs between the two address families, and nothing else: every walk of the route display is one text over
// this trait. A member that looks like a special case is one, and intended.
namespace Kiv {

struct Ipv4 {
   using Addr = Lumen::IpAddr;
   using Prefix = Lumen::Prefix;
   using AddrWithMask = Lumen::IpAddrWithMask;
   using RouteType = Routing::Fib::RouteType;
   using Route = Vault::Fib::Route;
   using RouteStatus = Vault::Fib::RouteStatus;
   using IpStatus = ::Ip::Status;
   using HardwareStatus = Routing::Hardware::Status;

   static constexpr auto addressFamily = Lumen::AddressFamily::ipv4;
   static constexpr char const* sorterName = "Kiv::RouteSorter";
   static constexpr char const* inputsName = "Kiv::RouteSorterInputs";
   static constexpr char const* printRoutesName = "bool Kiv::RouteSorter::printRoutes(U32, U32, bool)";
   static constexpr char const* switchName = "isisOnly";

   // An IPv4 table opens without the lines "Routing entry for" and "Displaying" of an IPv6 one.
   static constexpr bool hasTableHeader = false;
   // The whole prefix of a loopback interface is shown, not its address alone; IPv6 has no such rule.
   static constexpr bool recordsLoopbacks = true;
   // The family's own switch reduces the legend to the IS-IS codes.
   static constexpr bool switchReducesLegend = true;
   // In IPv4 the vias share the route's line and align under the first; in IPv6 each begins a line of its own.
   static constexpr bool viasShareRouteLine = true;

   static constexpr std::string_view hostLegend = Kiv::hostLegend;

   static constexpr Prefix prefixOf(Lumen::IpGenPrefix const& prefix) { return prefix.prefix(); }
   static constexpr Addr addrOf(Lumen::IpGenAddr const& address) { return address.ip(); }
   // The address with these bits, at most 32 of them, added at its low end.
   static constexpr Addr withLowBits(Addr address, U64 bits) { return Addr(address.value() | static_cast<U32>(bits)); }
   // Host routes that the box takes itself, and those that stand for a link.
   static constexpr bool isToCpu(RouteType type) {
      return type >= RouteType::receive && type <= RouteType::receiveBroadcast;
   }
   static constexpr bool isLinkRoute(RouteType type) {
      return type == RouteType::directedBroadcast || type == RouteType::attached;
   }
   // Routes to the box itself and to broadcast addresses: shown when they are an interface's own prefix.
   static constexpr bool isReceive(RouteType type) {
      return type >= RouteType::receive && type <= RouteType::directedBroadcast;
   }
};

struct Ipv6 {
   using Addr = Lumen::Ip6Addr;
   using Prefix = Lumen::Ip6Prefix;
   using AddrWithMask = Lumen::Ip6AddrWithMask;
   using RouteType = Routing6::Fib::RouteType;
   using Route = Vault::Fib6::Route;
   using RouteStatus = Vault::Fib6::RouteStatus;
   using IpStatus = ::Ip6::Status;
   using HardwareStatus = Routing6::Hardware::Status;

   static constexpr auto addressFamily = Lumen::AddressFamily::ipv6;
   static constexpr char const* sorterName = "Kiv::Route6Sorter";
   static constexpr char const* inputsName = "Kiv::Route6SorterInputs";
   static constexpr char const* printRoutesName = "bool Kiv::Route6Sorter::printRoutes(U32, U32, bool)";
   static constexpr char const* switchName = "intfFilter";

   static constexpr bool hasTableHeader = true;
   static constexpr bool recordsLoopbacks = false;
   static constexpr bool switchReducesLegend = false;
   static constexpr bool viasShareRouteLine = false;

   static constexpr std::string_view hostLegend = host6Legend;

   static constexpr Prefix prefixOf(Lumen::IpGenPrefix const& prefix) { return prefix.prefix6(); }
   static constexpr Addr addrOf(Lumen::IpGenAddr const& address) { return address.ip6(); }
   static constexpr Addr withLowBits(Addr address, U64 bits) { return {address.hi(), address.lo() | bits}; }
   static constexpr bool isToCpu(RouteType type) { return isReceive(type); }
   static constexpr bool isLinkRoute(RouteType type) { return type == RouteType::attached; }
   static constexpr bool isReceive(RouteType type) {
      return type == RouteType::receive || type == RouteType::receiveSelf;
   }
};

}  // namespace Kiv
