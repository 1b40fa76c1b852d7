#pragma once

#include "Routing/RouteType.h"
#include "Zam/Int.h"

#include <linux/rtnetlink.h>
#include <algorithm>
#include <array>

// What the FIB calls the routes of each Linux routing protocol, and the preference it would give them: Linux compares
// metrics only and knows no preference.
namespace kernel {

struct ProtocolKind {
   U8 protocol;  // RTPROT_*
   Routing::Fib::RouteType type;
   Routing6::Fib::RouteType type6;
   U8 preference;
};

namespace detail {

using R4 = Routing::Fib::RouteType;
using R6 = Routing6::Fib::RouteType;

constexpr U8 rtprotSuiteStatic =
    196;  // not in the kernel's list, but what static routes of a common routing suite carry

// Linux tells neither internal from external BGP nor the levels and areas of the link-state protocols: the most general
// type stands for all of a protocol's routes.
constexpr std::array protocolKinds{
    ProtocolKind{RTPROT_BOOT, R4::staticConfig, R6::staticConfig, 1},  // "ip route add" without a protocol
    ProtocolKind{RTPROT_STATIC, R4::staticConfig, R6::staticConfig, 1},
    ProtocolKind{RTPROT_KEEPALIVED, R4::staticConfig, R6::staticConfig, 1},
    ProtocolKind{rtprotSuiteStatic, R4::staticConfig, R6::staticConfig, 1},
    ProtocolKind{RTPROT_DHCP, R4::dhcp, R6::dhcp, 254},
    ProtocolKind{RTPROT_BGP, R4::bgpLocal, R6::bgp, 200},
    ProtocolKind{RTPROT_ISIS, R4::isisLevel2, R6::isisLevel2, 115},
    ProtocolKind{RTPROT_OSPF, R4::ospfIntraArea, R6::ospf, 110},
    ProtocolKind{RTPROT_RIP, R4::rip, R6::rip, 120},
};

}  // namespace detail

// A protocol without a type of its own (babel, EIGRP, router advertisements, ...) yields kernel routes.
constexpr ProtocolKind protocolKind(U8 protocol) {
   auto const found = std::ranges::find(detail::protocolKinds, protocol, &ProtocolKind::protocol);
   return found != detail::protocolKinds.end() ? *found
                                               : ProtocolKind{protocol, detail::R4::kernel, detail::R6::kernel, 254};
}

}  // namespace kernel
