#pragma once

#include "Zam/Int.h"
#include "programs/kiv/Command.h"

// What a command that configures a static route says, in the words of the configuration as it is saved.
namespace kiv {

namespace staticClause {
inline constexpr std::string_view prefix = "PREFIX";
inline constexpr std::string_view drop = "Null0";
inline constexpr std::string_view nexthopGroup = "nexthop-group";
inline constexpr std::string_view cached = "cached";
inline constexpr std::string_view egressVrf = "egress-vrf";
inline constexpr std::string_view interface = "INTERFACE";
inline constexpr std::string_view nexthop = "NEXTHOP";
inline constexpr std::string_view label = "label";
inline constexpr std::string_view trackBfd = "track bfd";
inline constexpr std::string_view vtep = "vtep";
inline constexpr std::string_view vni = "vni";
inline constexpr std::string_view routerMac = "router-mac-address";
inline constexpr std::string_view localInterface = "local-interface";
inline constexpr std::string_view ribBypass = "rib-bypass";
inline constexpr std::string_view sourceVtepValidation = "source-vtep-validation";
inline constexpr std::string_view preference = "PREFERENCE";
inline constexpr std::string_view tag = "tag";
inline constexpr std::string_view name = "name";
inline constexpr std::string_view metric = "metric";
inline constexpr std::string_view leakVrf = "leak vrf";
inline constexpr std::string_view vrf = "vrf";
}  // namespace staticClause

// Of "ip route" and "ipv6 route".
std::span<Clause const> ipStaticRouteClauses();
std::span<Clause const> ipv6StaticRouteClauses();
// Of "no ip route" and "no ipv6 route", which need not say where the route leads.
std::span<Clause const> noIpStaticRouteClauses();
std::span<Clause const> noIpv6StaticRouteClauses();

// What is wrong with the text is thrown.
void checkTagText(std::string_view word);
void checkInterfaceText(std::string_view word);

// A number that a clause's check has let through.
U32 checkedNumber(std::string_view word);

}  // namespace kiv
