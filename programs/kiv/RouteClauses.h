#pragma once

#include "programs/kiv/Command.h"

// What may be asked of the route tables. The clauses are those of both families' commands; only what an address and
// which protocols are differs.
namespace kiv {

namespace routeClause {
inline constexpr std::string_view prefix = "ADDRESS|PREFIX";
inline constexpr std::string_view longerPrefixes = "longer-prefixes";
inline constexpr std::string_view protocol = "PROTOCOL";  // its value is the protocol code
inline constexpr std::string_view nexthop = "nexthop";
inline constexpr std::string_view interface = "interface";
inline constexpr std::string_view nexthopGroup = "nexthop-group";
inline constexpr std::string_view matchingViasOnly = "matching-vias-only";
inline constexpr std::string_view all = "all";
inline constexpr std::string_view host = "host";
inline constexpr std::string_view vrf = "vrf";
}  // namespace routeClause

// What stands for all VRFs, and for any nexthop group; a VRF or group of that name cannot be asked for alone.
inline constexpr std::string_view allVrfs = "all";
inline constexpr std::string_view anyGroup = "any";

std::span<Clause const> ipRouteClauses();
std::span<Clause const> ipv6RouteClauses();
std::span<Clause const> summaryClauses();

}  // namespace kiv
