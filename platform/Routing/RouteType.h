#pragma once

#include "Zam/Int.h"
#include "Zam/Strep.h"

#include <array>

// The route types of the FIB and of the RIB. The numbers are the contract: they are what the shared tables hold, and
// every table of codes and legends is keyed by them. A value outside the enumerators can be met in a damaged table;
// whoever reads one says so instead of trusting it.
namespace Routing {

// What a configured route does, in the RIB.
enum class RouteType : U8 {
   forward = 0,
   drop = 1,
   nexthopGroup = 2,
   l2NexthopGroup = 3,
   routeCacheConnected = 4,
};

constexpr auto zamEnumerators(RouteType) {
   return std::to_array<Zam::Enumerator<RouteType>>({{RouteType::forward, "forward"},
                                                     {RouteType::drop, "drop"},
                                                     {RouteType::nexthopGroup, "nexthopGroup"},
                                                     {RouteType::l2NexthopGroup, "l2nexthopgroup"},
                                                     {RouteType::routeCacheConnected, "routeCacheConnected"}});
}

namespace Fib {

enum class RouteType : U8 {
   unknown = 0,
   receive = 1,
   receiveSelf = 2,
   receiveBroadcast = 3,
   directedBroadcast = 4,
   attached = 5,
   reserved = 6,
   staticConfig = 7,
   vcs = 8,
   kernel = 9,
   rip = 10,
   connected = 11,
   redirect = 12,
   bgpAggregate = 13,
   ospfSummary = 14,
   ospfIntraArea = 15,
   ospfInterArea = 16,
   ospfExternalType1 = 17,
   ospfExternalType2 = 18,
   ospfNssaExternalType1 = 19,
   ospfNssaExternalType2 = 20,
   iBgp = 21,
   iBgpLeaked = 22,
   eBgp = 23,
   eBgpLeaked = 24,
   bgpLocal = 25,
   isisLevel1 = 26,
   isisLevel2 = 27,
   nexthopGroup = 28,
   drop = 29,
   ospf3IntraArea = 30,
   ospf3InterArea = 31,
   ospf3ExternalType1 = 32,
   ospf3ExternalType2 = 33,
   ospf3Nssa = 34,
   dhcp = 35,
   martian = 36,
   dynamicPolicy = 37,
   reserved38 = 38,
   l2NexthopGroup = 39,
   routeCacheConnected = 40,
   routeCacheForward = 41,
   gribi = 42,
   staticOpalSdk = 43,
   cbf = 44,
};

}  // namespace Fib
}  // namespace Routing

namespace Routing6::Fib {

enum class RouteType : U8 {
   unknown = 0,
   receive = 1,
   receiveSelf = 2,
   attached = 3,
   staticConfig = 4,
   kernel = 5,
   rip = 6,
   connected = 7,
   redirect = 8,
   bgpAggregate = 9,
   ospfSummary = 10,
   ospf = 11,
   bgp = 12,
   iBgp = 13,
   iBgpLeaked = 14,
   eBgp = 15,
   eBgpLeaked = 16,
   bgpLocal = 17,
   isisLevel1 = 18,
   isisLevel2 = 19,
   nexthopGroup = 20,
   drop = 21,
   dhcp = 22,
   martian = 23,
   dynamicPolicy = 24,
   reserved = 25,
   l2NexthopGroup = 26,
   routeCacheConnected = 27,
   routeCacheForward = 28,
   gribi = 29,
   staticOpalSdk = 30,
   cbf = 31,
};

}  // namespace Routing6::Fib

namespace Routing::Rib {

// What a via does to the packet before it looks the inner packet up again.
enum class DecapActionType : U8 {
   none = 0,
   ipIp = 1,
};

constexpr auto zamEnumerators(DecapActionType) {
   return std::to_array<Zam::Enumerator<DecapActionType>>(
       {{DecapActionType::none, "none"}, {DecapActionType::ipIp, "ipIp"}});
}

}  // namespace Routing::Rib
