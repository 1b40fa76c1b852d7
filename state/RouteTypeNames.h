#pragma once

#include "Routing/RouteType.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

// The names of the FIB's route types, which are those of their enumerators: one list per family, for both directions.
namespace state {

template <class RouteType>
struct RouteTypeName {
   RouteType type;
   std::string_view name;
};

template <class RouteType>
inline constexpr std::array<RouteTypeName<RouteType>, 0> routeTypeNames{};

template <>
inline constexpr auto routeTypeNames<Routing::Fib::RouteType> = [] {
   using enum Routing::Fib::RouteType;
   return std::to_array<RouteTypeName<Routing::Fib::RouteType>>({
       {unknown, "unknown"},
       {receive, "receive"},
       {receiveSelf, "receiveSelf"},
       {receiveBroadcast, "receiveBroadcast"},
       {directedBroadcast, "directedBroadcast"},
       {attached, "attached"},
       {reserved, "reserved"},
       {staticConfig, "staticConfig"},
       {vcs, "vcs"},
       {kernel, "kernel"},
       {rip, "rip"},
       {connected, "connected"},
       {redirect, "redirect"},
       {bgpAggregate, "bgpAggregate"},
       {ospfSummary, "ospfSummary"},
       {ospfIntraArea, "ospfIntraArea"},
       {ospfInterArea, "ospfInterArea"},
       {ospfExternalType1, "ospfExternalType1"},
       {ospfExternalType2, "ospfExternalType2"},
       {ospfNssaExternalType1, "ospfNssaExternalType1"},
       {ospfNssaExternalType2, "ospfNssaExternalType2"},
       {iBgp, "iBgp"},
       {iBgpLeaked, "iBgpLeaked"},
       {eBgp, "eBgp"},
       {eBgpLeaked, "eBgpLeaked"},
       {bgpLocal, "bgpLocal"},
       {isisLevel1, "isisLevel1"},
       {isisLevel2, "isisLevel2"},
       {nexthopGroup, "nexthopGroup"},
       {drop, "drop"},
       {ospf3IntraArea, "ospf3IntraArea"},
       {ospf3InterArea, "ospf3InterArea"},
       {ospf3ExternalType1, "ospf3ExternalType1"},
       {ospf3ExternalType2, "ospf3ExternalType2"},
       {ospf3Nssa, "ospf3Nssa"},
       {dhcp, "dhcp"},
       {martian, "martian"},
       {dynamicPolicy, "dynamicPolicy"},
       {reserved38, "reserved38"},
       {l2NexthopGroup, "l2NexthopGroup"},
       {routeCacheConnected, "routeCacheConnected"},
       {routeCacheForward, "routeCacheForward"},
       {gribi, "gribi"},
       {staticOpalSdk, "staticOpalSdk"},
       {cbf, "cbf"},
   });
}();

template <>
inline constexpr auto routeTypeNames<Routing6::Fib::RouteType> = [] {
   using enum Routing6::Fib::RouteType;
   return std::to_array<RouteTypeName<Routing6::Fib::RouteType>>({
       {unknown, "unknown"},
       {receive, "receive"},
       {receiveSelf, "receiveSelf"},
       {attached, "attached"},
       {staticConfig, "staticConfig"},
       {kernel, "kernel"},
       {rip, "rip"},
       {connected, "connected"},
       {redirect, "redirect"},
       {bgpAggregate, "bgpAggregate"},
       {ospfSummary, "ospfSummary"},
       {ospf, "ospf"},
       {bgp, "bgp"},
       {iBgp, "iBgp"},
       {iBgpLeaked, "iBgpLeaked"},
       {eBgp, "eBgp"},
       {eBgpLeaked, "eBgpLeaked"},
       {bgpLocal, "bgpLocal"},
       {isisLevel1, "isisLevel1"},
       {isisLevel2, "isisLevel2"},
       {nexthopGroup, "nexthopGroup"},
       {drop, "drop"},
       {dhcp, "dhcp"},
       {martian, "martian"},
       {dynamicPolicy, "dynamicPolicy"},
       {reserved, "reserved"},
       {l2NexthopGroup, "l2NexthopGroup"},
       {routeCacheConnected, "routeCacheConnected"},
       {routeCacheForward, "routeCacheForward"},
       {gribi, "gribi"},
       {staticOpalSdk, "staticOpalSdk"},
       {cbf, "cbf"},
   });
}();

template <class RouteType>
constexpr std::optional<RouteType> routeTypeOf(std::string_view name) {
   auto const& names = routeTypeNames<RouteType>;
   auto const found =
       std::find_if(names.begin(), names.end(), [name](auto const& entry) { return entry.name == name; });
   return found != names.end() ? std::optional(found->type) : std::nullopt;
}

// Empty for a number that is no enumerator.
template <class RouteType>
constexpr std::string_view routeTypeName(RouteType type) {
   auto const& names = routeTypeNames<RouteType>;
   auto const found =
       std::find_if(names.begin(), names.end(), [type](auto const& entry) { return entry.type == type; });
   return found != names.end() ? found->name : std::string_view();
}

}  // namespace state
