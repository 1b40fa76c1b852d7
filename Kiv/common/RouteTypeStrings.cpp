#include "Kiv/common/RouteTypeStrings.h"

#include "Zam/Error.h"

#include <array>

namespace Kiv {

namespace {

constexpr char const* source = "Kiv/CliSupport";

// Indexed by type; a row without a code pointer is a type without an entry.
constexpr RouteTypeStrings noEntry{.code = nullptr};
constexpr RouteTypeStrings withoutCode{};
constexpr RouteTypeStrings withoutType{.hostCode = '-', .hostWord = "-"};
constexpr RouteTypeStrings received{"C", "connected", "C", "internal", 'R', "receive"};
constexpr RouteTypeStrings broadcast{"C", "connected", "C", "internal", 'B', "broadcast"};
constexpr RouteTypeStrings directedBroadcast{"C", "connected", "C", "internal", 'D', "directedBcast"};
constexpr RouteTypeStrings attached{"", "", "", "attached", 'A', "attached"};
constexpr RouteTypeStrings connected{"C", "connected", "C", "connected", 'R'};
constexpr RouteTypeStrings ospf3{"O3", "OSPFv3", "O3", "ospfv3Total"};
constexpr RouteTypeStrings iBgp{"B I", "iBGP", "B", "bgpInternal"};
constexpr RouteTypeStrings eBgp{"B E", "eBGP", "B", "bgpExternal"};

constexpr std::array<RouteTypeStrings, maxRouteType + 1> routeTypes{{
    /*  0 */ withoutType,
    /*  1 */ received,
    /*  2 */ received,
    /*  3 */ broadcast,
    /*  4 */ directedBroadcast,
    /*  5 */ attached,
    /*  6 */ noEntry,
    /*  7 */ {"S", "static", "S", "static"},
    /*  8 */ {"V", "vcs", "V", "vcs"},
    /*  9 */ {"K", "kernel", "K", "internal"},
    /* 10 */ {"R", "RIP", "R", "rip"},
    /* 11 */ connected,
    /* 12 */ withoutCode,
    /* 13 */ {"A B", "bgpAggregate", "A", "aggregate"},
    /* 14 */ {"A O", "ospfSummary", "A", "aggregate"},
    /* 15 */ {"O", "OSPF", "O", "ospfIntraArea"},
    /* 16 */ {"O IA", "ospfInterArea", "O", "ospfInterArea"},
    /* 17 */ {"O E1", "ospfExternalType1", "O", "ospfExternal1"},
    /* 18 */ {"O E2", "ospfExternalType2", "O", "ospfExternal2"},
    /* 19 */ {"O N1", "ospfNssaExternalType1", "O", "nssaExternal1"},
    /* 20 */ {"O N2", "ospfNssaExternalType2", "O", "nssaExternal2"},
    /* 21 */ iBgp,
    /* 22 */ iBgp,
    /* 23 */ eBgp,
    /* 24 */ eBgp,
    /* 25 */ {"B", "BGP", "B", "bgpLocal"},
    /* 26 */ {"I L1", "ISISLevel1", "I", "isisLevel1"},
    /* 27 */ {"I L2", "ISISLevel2", "I", "isisLevel2"},
    /* 28 */ {"NG", "nexthopGroupStaticRoute", "S", "staticNexthopGroup"},
    /* 29 */ {"S", "dropRoute", "S", "internal"},
    /* 30 */ ospf3,
    /* 31 */ ospf3,
    /* 32 */ ospf3,
    /* 33 */ ospf3,
    /* 34 */ ospf3,
    /* 35 */ {"DH", "dhcp", "DH", "DhcpDefaultRoute"},
    /* 36 */ {"M", "martian", "M", "internal"},
    /* 37 */ {"DP", "dynamicPolicy", "DP", "dynamicPolicy"},
    /* 38 */ noEntry,
    /* 39 */ {"L2NG", "l2NexthopGroupRoute", "L2NG", "l2NexthopGroup"},
    /* 40 */ {"RC", "routeCacheConnected", "RC", "routeCacheConnected"},
    /* 41 */ {"RCF", "routeCacheForward", "RCF", "routeCacheForward"},
    /* 42 */ {"G", "gribi", "G", "gribi"},
    /* 43 */ withoutCode,
    /* 44 */ withoutCode,
}};

// The words differ from IPv4's where scripts came to know them differently; they stay as they are.
constexpr std::array<RouteTypeStrings, maxRoute6Type + 1> route6Types{{
    /*  0 */ withoutType,
    /*  1 */ received,
    /*  2 */ received,
    /*  3 */ attached,
    /*  4 */ {"S", "static", "S", "static"},
    /*  5 */ {"K", "kernel", "K", "internal"},
    /*  6 */ {"R", "RIP", "R", ""},
    /*  7 */ connected,
    /*  8 */ withoutCode,
    /*  9 */ {"A B", "bgpAggregate", "A", "aggregate"},
    /* 10 */ {"A O", "ospfSummary", "A", "aggregate"},
    /* 11 */ {"O3", "ospf", "O3", "ospfTotal"},
    /* 12 */ {"B", "bgp", "B", "bgpTotal"},
    /* 13 */ iBgp,
    /* 14 */ iBgp,
    /* 15 */ eBgp,
    /* 16 */ eBgp,
    /* 17 */ {"B", "bgp", "B", "bgpLocal"},
    /* 18 */ {"I L1", "isisL1", "I", "isisLevel1"},
    /* 19 */ {"I L2", "isisL2", "I", "isisLevel2"},
    /* 20 */ {"NG", "nexthopGroupStaticRoute", "S", "staticNexthopGroup"},
    /* 21 */ {"S", "dropRoute", "S", "internal"},
    /* 22 */ {"DH", "dhcp", "DH", "dhcp"},
    /* 23 */ {"M", "martian", "M", "internal"},
    /* 24 */ {"DP", "dynamicPolicy", "DP", "dynamicPolicy"},
    /* 25 */ noEntry,
    /* 26 */ {"L2NG", "l2NexthopGroupRoute", "L2NG", "l2NexthopGroup"},
    /* 27 */ {"RC", "routeCacheConnected", "RC", "routeCacheConnected"},
    /* 28 */ {"RCF", "routeCacheForward", "RCF", "routeCacheForward"},
    /* 29 */ {"G", "gribi", "G", "gribi"},
    /* 30 */ withoutCode,
    /* 31 */ withoutCode,
}};

template <class RouteType, std::size_t Size>
RouteTypeStrings const* find(std::array<RouteTypeStrings, Size> const& table, RouteType type) noexcept {
   auto const index = static_cast<std::size_t>(type);
   return index < Size && table[index].code != nullptr ? &table[index] : nullptr;
}

// A type without an entry is one of the FIB's all the same.
constexpr RouteTypeStrings const& hostColumns(RouteTypeStrings const* strings) noexcept {
   return strings != nullptr ? *strings : withoutCode;
}

struct RibRouteTypeStrings {
   char const* name;
   char const* code;
};

constexpr std::array<RibRouteTypeStrings, 5> ribRouteTypes{{
    {"forward", "F"},
    {"drop", "D"},
    {"nexthopGroup", "NG"},
    {"l2nexthopgroup", "L2NG"},
    {"routeCacheConnected", "RC"},
}};

RibRouteTypeStrings const& ribRouteTypeLookup(Routing::RouteType type, char const* function) {
   auto const index = static_cast<std::size_t>(type);
   Zam::assertThat(index < ribRouteTypes.size(), "!\"Invalid Routing::RouteType argument\"", source, function);
   return ribRouteTypes[index];
}

}  // namespace

RouteTypeStrings const* routeTypeStringsFind(Routing::Fib::RouteType type) noexcept {
   return find(routeTypes, type);
}

RouteTypeStrings const* routeTypeStringsFind(Routing6::Fib::RouteType type) noexcept {
   return find(route6Types, type);
}

RouteTypeStrings const& routeTypeStringsLookup(Routing::Fib::RouteType type) {
   auto const* const strings = routeTypeStringsFind(type);
   Zam::assertThat(strings != nullptr, "0 && \"unexpected RouteType\"", source,
                   "const RouteTypeStrings routeTypeStringsLookup(Routing::Fib::RouteType)");
   return *strings;
}

RouteTypeStrings const& routeTypeStringsLookup(Routing6::Fib::RouteType type) {
   auto const* const strings = routeTypeStringsFind(type);
   Zam::assertThat(strings != nullptr, "0 && \"unexpected RouteType\"", source,
                   "const RouteTypeStrings routeTypeStringsLookup(Routing6::Fib::RouteType)");
   return *strings;
}

char hcode(Routing::Fib::RouteType type) noexcept {
   return hostColumns(routeTypeStringsFind(type)).hostCode;
}

char hcode(Routing6::Fib::RouteType type) noexcept {
   return hostColumns(routeTypeStringsFind(type)).hostCode;
}

char const* hcodeWord(Routing::Fib::RouteType type) noexcept {
   return hostColumns(routeTypeStringsFind(type)).hostWord;
}

char const* hcodeWord(Routing6::Fib::RouteType type) noexcept {
   return hostColumns(routeTypeStringsFind(type)).hostWord;
}

char const* ribRouteType(Routing::RouteType type) {
   return ribRouteTypeLookup(type, "const char* ribRouteType(Routing::RouteType)").name;
}

char const* ribRouteTypeCode(Routing::RouteType type) {
   return ribRouteTypeLookup(type, "const char* ribRouteTypeCode(Routing::RouteType)").code;
}

}  // namespace Kiv
