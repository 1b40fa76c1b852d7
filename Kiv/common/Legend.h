#pragma once

#include <string_view>

// The legends above the tables. They end in a newline and are printed with "%s\n", so that a blank line follows.
namespace Kiv {

// Blanks and spellings ("type2", the two blanks after "G") are what users' scripts match; they stay as they are.
inline constexpr std::string_view routeLegend =
    "Codes: C - connected, S - static, K - kernel, \n"
    "       O - OSPF, IA - OSPF inter area, E1 - OSPF external type 1,\n"
    "       E2 - OSPF external type 2, N1 - OSPF NSSA external type 1,\n"
    "       N2 - OSPF NSSA external type2, B - Other BGP Routes,\n"
    "       B I - iBGP, B E - eBGP, R - RIP, I L1 - IS-IS level 1,\n"
    "       I L2 - IS-IS level 2, O3 - OSPFv3, A B - BGP Aggregate,\n"
    "       A O - OSPF Summary, NG - Nexthop Group Static Route,\n"
    "       V - VXLAN Control Service, M - Martian,\n"
    "       DH - DHCP client installed default route,\n"
    "       DP - Dynamic Policy Route, L - VRF Leaked,\n"
    "       G  - gRIBI, RC - Route Cache Route\n";

inline constexpr std::string_view isisLegend = "Codes: I L1 - IS-IS level 1, I L2 - IS-IS level 2\n";

inline constexpr std::string_view route6Legend =
    "Codes: C - connected, S - static, K - kernel, O3 - OSPFv3,\n"
    "       B - Other BGP Routes, A B - BGP Aggregate, R - RIP,\n"
    "       I L1 - IS-IS level 1, I L2 - IS-IS level 2, DH - DHCP,\n"
    "       NG - Nexthop Group Static Route, M - Martian,\n"
    "       DP - Dynamic Policy Route, L - VRF Leaked,\n"
    "       RC - Route Cache Route\n";

inline constexpr std::string_view hostLegend =
    "R - receive, B - broadcast, F - FIB, A - attached, "
    "D - directed broadcast\n";

inline constexpr std::string_view host6Legend = "R - receive, F - FIB, A - attached\n";

inline constexpr std::string_view ribLegend = "Codes: F - forward, D - drop, NG - nexthop group\n";

}  // namespace Kiv
