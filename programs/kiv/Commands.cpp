#include "programs/kiv/Commands.h"

#include "programs/kiv/Check.h"
#include "programs/kiv/ClearCounters.h"
#include "programs/kiv/Configure.h"
#include "programs/kiv/Help.h"
#include "programs/kiv/Load.h"
#include "programs/kiv/RouteClauses.h"
#include "programs/kiv/ShowConfiguration.h"
#include "programs/kiv/ShowNexthopGroup.h"
#include "programs/kiv/ShowRoute.h"
#include "programs/kiv/ShowSummary.h"
#include "programs/kiv/StaticRouteClauses.h"

#include <array>

namespace kiv {
namespace {

bool anyWord(std::string_view) {
   return true;
}

constexpr auto loadClauses = std::to_array<Clause>({
    {.keyword = "",
     .parameter = "SNAPSHOT",
     .help = "file that describes the state of a box, see docs/snapshot.md",
     .required = true,
     .accepts = anyWord},
});

constexpr auto configureClauses = std::to_array<Clause>({
    {.keyword = "",
     .parameter = "FILE",
     .help = "file of ip route, ipv6 route, no and clear commands, one a line",
     .required = true,
     .accepts = anyWord},
});

constexpr auto runningClauses = std::to_array<Clause>({
    {.keyword = routeClause::all,
     .parameter = "",
     .help = "with preference and tag, even when they are the usual ones"},
});

constexpr auto staticTableClauses = std::to_array<Clause>({
    {.keyword = staticClause::tag, .parameter = "NUMBER", .help = "with this tag; 0 for any", .check = checkTagText},
    {.keyword = routeClause::vrf, .parameter = "NAME|all", .help = "of this VRF, or of all, not of the default one"},
});

constexpr auto clearInterfaceClauses = std::to_array<Clause>({
    {.keyword = "interface",
     .parameter = "NAME",
     .help = "through this interface",
     .required = true,
     .check = checkInterfaceText},
});

template <void (*check)(std::string_view)>
constexpr Clause addressClause{.keyword = "",
                               .parameter = "ADDRESS/LENGTH",
                               .help = "the address and its mask length",
                               .required = true,
                               .accepts = anyWord,
                               .check = check};
constexpr Clause onInterface{.keyword = "interface",
                             .parameter = "NAME",
                             .help = "the interface that is to have it",
                             .required = true,
                             .check = checkInterfaceText};
constexpr std::array checkIpClauses{
    addressClause<checkIpAddressText>, onInterface,
    Clause{.keyword = "secondary", .parameter = "", .help = "beside the interface's primary address"}};
constexpr std::array checkIpv6Clauses{addressClause<checkIpv6AddressText>, onInterface};
constexpr auto checkRdClauses = std::to_array<Clause>({
    {.keyword = "",
     .parameter = "RD",
     .help = "the route distinguisher",
     .required = true,
     .accepts = anyWord,
     .check = checkRouteDistinguisherText},
    {.keyword = "vrf", .parameter = "NAME", .help = "the VRF that is to have it", .required = true},
});

constexpr Command configuration(std::string_view words, std::string_view help, std::span<Clause const> clauses,
                                void (*configure)(state::State&, Request const&)) {
   return {words, help, clauses, changeConfiguration, configure};
}

}  // namespace

std::span<Command const> commands() {
   static auto const table = std::to_array<Command>({
       {"show ip route", "the IPv4 route table", ipRouteClauses(), showIpRoute},
       {"show ipv6 route", "the IPv6 route table", ipv6RouteClauses(), showIpv6Route},
       {"show ip route summary", "how many IPv4 routes there are", summaryClauses(), showIpRouteSummary},
       {"show ipv6 route summary", "how many IPv6 routes there are", summaryClauses(), showIpv6RouteSummary},
       {"show ip route static configured", "the IPv4 static routes as they are configured", staticTableClauses,
        showIpStaticRoutes},
       {"show ipv6 route static configured", "the IPv6 static routes as they are configured", staticTableClauses,
        showIpv6StaticRoutes},
       {"show running-config ip route", "the commands that configure the IPv4 static routes", runningClauses,
        showRunningIpRoutes},
       {"show running-config ipv6 route", "the commands that configure the IPv6 static routes", runningClauses,
        showRunningIpv6Routes},
       configuration("ip route", "configure an IPv4 static route", ipStaticRouteClauses(), addIpRoute),
       configuration("ipv6 route", "configure an IPv6 static route", ipv6StaticRouteClauses(), addIpv6Route),
       configuration("no ip route", "take an IPv4 static route away", noIpStaticRouteClauses(), removeIpRoute),
       configuration("no ipv6 route", "take an IPv6 static route away", noIpv6StaticRouteClauses(), removeIpv6Route),
       configuration("clear ip route", "take IPv4 static routes away", clearInterfaceClauses, clearIpRouteInterface),
       configuration("clear ipv6 route", "take IPv6 static routes away", clearInterfaceClauses,
                     clearIpv6RouteInterface),
       {"configure", "carry out all commands of a file, or none", configureClauses, configureFromFile},
       {"check ip address", "may an interface have this IPv4 address?", checkIpClauses, checkIpAddress},
       {"check ipv6 address", "may an interface have this IPv6 address?", checkIpv6Clauses, checkIpv6Address},
       {"check route-distinguisher", "may a VRF have this route distinguisher?", checkRdClauses,
        checkRouteDistinguisher},
       {"show nexthop-group", "all nexthop groups with their entries and counters", nexthopGroupClauses(),
        showNexthopGroup},
       {"clear nexthop-group counters",
        "let the counters in the state directory start again from 0",
        {},
        clearCounters},
       {"load", "make the directory given with --state hold the state of a snapshot", loadClauses, loadSnapshot},
       {"help", "the commands and options", {}, help},
   });
   return table;
}

}  // namespace kiv
