#pragma once

#include "programs/kiv/Vrfs.h"

#include <optional>

// What may be asked of the route tables. The clauses are those of both families' commands; only what an address and
// which protocols are differs.
namespace kiv {

template <class Prefix>
struct RouteArguments {
   std::optional<RequestedPrefix<Prefix>> prefix{};
   bool longerPrefixes = false;
   std::string_view protocol{};  // the protocol code, empty for all
   std::optional<Lumen::IpGenAddr> nexthop{};
   std::optional<std::string> interface {};
   std::optional<std::string> nexthopGroup{};  // or any
   bool matchingViasOnly = false;
   bool all = false;
   bool host = false;
   std::string vrf{L3::VrfName::defaultVrf};  // or all
};

namespace detail {

// Each word and the protocol code of the routes that it selects.
inline constexpr auto protocols = std::to_array<Word>({
    {"aggregate", "A", "aggregates of BGP and summaries of OSPF"},
    {"bgp", "B", "BGP, internal and external"},
    {"connected", "C", "connected networks and the box's own addresses"},
    {"dhcp", "DH", "the DHCP client"},
    {"dynamic-policy", "DP", "dynamic policies"},
    {"gribi", "G", "gRIBI"},
    {"isis", "I", "IS-IS, both levels"},
    {"kernel", "K", "the kernel"},
    {"l2-nexthop-group", "L2NG", "layer-2 nexthop groups"},
    {"martian", "M", "martians, which only \"all\" shows"},
    {"ospf", "O", "OSPF, without OSPFv3"},
    {"ospf3", "O3", "OSPFv3"},
    {"rip", "R", "RIP"},
    {"route-cache-connected", "RC", "connected routes of the route cache"},
    {"route-cache-forward", "RCF", "forwarding routes of the route cache"},
    {"static", "S", "static routes, to nexthop groups and Null0 too"},
    {"vcs", "V", "the VXLAN control service"},
});

// In IPv6 all of OSPF is OSPFv3, and there is no VXLAN control service.
inline constexpr auto protocols6 = [] {
   static_assert(protocols.back().word == "vcs");
   std::array<Word, protocols.size() - 1> words{};
   std::copy_n(protocols.begin(), words.size(), words.begin());
   *std::find_if(words.begin(), words.end(), [](Word const& w) { return w.word == "ospf"; }) = {"ospf", "O3", "OSPFv3"};
   return words;
}();

template <class Prefix>
struct Protocol : WordOf<protocols> {};
template <>
struct Protocol<Lumen::Ip6Prefix> : WordOf<protocols6> {};

}  // namespace detail

template <class Prefix>
inline constexpr auto routeClauses = [] {
   using A = RouteArguments<Prefix>;
   return clauses(
       clause<&A::prefix, AddressOrPrefix<Prefix>>(
           {.keyword = "", .help = "the route that this address, or this prefix as a whole, is forwarded by"}),
       clause<&A::longerPrefixes>(
           {.keyword = "longer-prefixes", .help = "instead, all routes inside the prefix", .needs = keys<&A::prefix>}),
       clause<&A::protocol, detail::Protocol<Prefix>>(
           {.keyword = "", .parameter = "PROTOCOL", .help = "learned from one of these:"}),
       clause<&A::nexthop, Address>({.keyword = "nexthop", .help = "through this next hop, of either family"}),
       clause<&A::interface, InterfaceName>({.keyword = "interface", .help = "through this interface"}),
       clause<&A::nexthopGroup, NexthopGroupNameOrAny>(
           {.keyword = "nexthop-group", .help = "through this nexthop group, or any of them"}),
       // Vias that are taken out of a FEC for one route would be missing when the next that shares it is asked for a
       // group.
       clause<&A::matchingViasOnly>({.keyword = "matching-vias-only",
                                     .help = "of each route, only the vias that match the next hop and interface",
                                     .needs = keys<&A::nexthop, &A::interface>,
                                     .excludes = keys<&A::nexthopGroup>}),
       clause<&A::all>({.keyword = "all", .help = "also martian, link-local and unresolved routes"}),
       // Host routes are shown all together.
       clause<&A::host>({.keyword = "host",
                         .help = "instead, the addresses that the box receives on or reaches directly",
                         .excludes = keys<&A::prefix, &A::longerPrefixes, &A::protocol, &A::nexthop, &A::interface,
                                          &A::nexthopGroup, &A::matchingViasOnly, &A::all>}),
       vrfOrAllClause<&A::vrf>);
}();

}  // namespace kiv
