#pragma once

#include "Lumen/EthAddr.h"
#include "Lumen/IpGenPrefix.h"
#include "programs/command/Kinds.h"

#include <optional>

// What a command that configures a static route says, in the words of the configuration as it is saved.
namespace kiv {

// The prefix of a route, and as it was typed: bits beyond an IPv4 mask are refused by the route configuration itself.
struct Destination {
   std::string word{};
   Lumen::IpGenPrefix prefix{};
};

struct StaticRouteArguments {
   Destination prefix{};
   bool drop = false;
   std::optional<std::string> nexthopGroup{};
   bool cached = false;
   std::optional<std::string> egressVrf{};
   std::optional<std::string> interface {};
   std::optional<Lumen::IpGenAddr> nexthop{};
   std::optional<U32> label{};
   bool trackBfd = false;
   std::optional<Lumen::IpGenAddr> vtep{};
   std::optional<U32> vni{};
   std::optional<Lumen::EthAddr> routerMac{};
   std::optional<std::string> localInterface{};
   bool ribBypass = false;
   bool sourceVtepValidation = false;
   std::optional<U32> preference{};
   std::optional<U32> tag{};
   std::optional<std::string> name{};
   std::optional<U32> metric{};
   std::optional<std::string> leakVrf{};
   std::string vrf{L3::VrfName::defaultVrf};
};
inline constexpr std::size_t staticRouteClauseCount = 21;
using StaticRouteClauses = Clauses<StaticRouteArguments, staticRouteClauseCount>;

// The name of an interface in commands of the configuration.
struct ConfigInterface : InterfaceName {
   static bool accepts(std::string_view word);
   static std::string read(std::string_view word);
};

// Of "ip route" and "ipv6 route".
extern StaticRouteClauses const ipStaticRouteClauses;
extern StaticRouteClauses const ipv6StaticRouteClauses;
// Of "no ip route" and "no ipv6 route", which need not say where the route leads.
extern StaticRouteClauses const noIpStaticRouteClauses;
extern StaticRouteClauses const noIpv6StaticRouteClauses;

}  // namespace kiv
