#include "programs/kiv/RouteClauses.h"

#include "programs/kiv/RequestedPrefix.h"

#include <algorithm>
#include <array>

namespace kiv {
namespace {

// Each word and the protocol code of the routes that it selects.
constexpr auto protocols = std::to_array<Word>({
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
constexpr auto protocols6 = [] {
   static_assert(protocols.back().word == "vcs");
   std::array<Word, protocols.size() - 1> words{};
   std::copy_n(protocols.begin(), words.size(), words.begin());
   *std::find_if(words.begin(), words.end(), [](Word const& w) { return w.word == "ospf"; }) = {"ospf", "O3", "OSPFv3"};
   return words;
}();

// Longer prefixes of what, and the vias that match what.
constexpr std::array longerThan{routeClause::prefix};
constexpr std::array matchingWhat{routeClause::nexthop, routeClause::interface};
// Vias that are taken out of a FEC for one route would be missing when the next that shares it is asked for a group.
constexpr std::array notMatchedByVia{routeClause::nexthopGroup};
// Host routes are shown all together.
constexpr std::array notOfHosts{
    routeClause::prefix,    routeClause::longerPrefixes, routeClause::protocol,         routeClause::nexthop,
    routeClause::interface, routeClause::nexthopGroup,   routeClause::matchingViasOnly, routeClause::all};

template <class Prefix>
void checkPrefix(std::string_view word) {
   requestedPrefix<Prefix>(word);
}

void checkNexthop(std::string_view word) {
   requestedNexthop(word);
}

constexpr Clause vrfClause{
    .keyword = routeClause::vrf, .parameter = "NAME|all", .help = "of this VRF, or of all, not of the default one"};

template <class Prefix>
constexpr auto clausesOf(std::span<Word const> protocolWords) {
   return std::to_array<Clause>({
       {.keyword = "",
        .parameter = routeClause::prefix,
        .help = "the route that this address, or this prefix as a whole, is forwarded by",
        .accepts = looksLikePrefix,
        .check = checkPrefix<Prefix>},
       {.keyword = routeClause::longerPrefixes,
        .parameter = "",
        .help = "instead, all routes inside the prefix",
        .needs = longerThan},
       {.keyword = "",
        .parameter = routeClause::protocol,
        .help = "learned from one of these:",
        .words = protocolWords},
       {.keyword = routeClause::nexthop,
        .parameter = "ADDRESS",
        .help = "through this next hop, of either family",
        .check = checkNexthop},
       {.keyword = routeClause::interface, .parameter = "NAME", .help = "through this interface"},
       {.keyword = routeClause::nexthopGroup,
        .parameter = "NAME|any",
        .help = "through this nexthop group, or any of them"},
       {.keyword = routeClause::matchingViasOnly,
        .parameter = "",
        .help = "of each route, only the vias that match the next hop and interface",
        .needs = matchingWhat,
        .excludes = notMatchedByVia},
       {.keyword = routeClause::all, .parameter = "", .help = "also martian, link-local and unresolved routes"},
       {.keyword = routeClause::host,
        .parameter = "",
        .help = "instead, the addresses that the box receives on or reaches directly",
        .excludes = notOfHosts},
       vrfClause,
   });
}

constexpr std::array vrfClauses{vrfClause};
constexpr auto clauses = clausesOf<Lumen::Prefix>(protocols);
constexpr auto clauses6 = clausesOf<Lumen::Ip6Prefix>(protocols6);

}  // namespace

std::span<Clause const> ipRouteClauses() {
   return clauses;
}

std::span<Clause const> ipv6RouteClauses() {
   return clauses6;
}

std::span<Clause const> summaryClauses() {
   return vrfClauses;
}

}  // namespace kiv
