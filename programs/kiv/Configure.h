#pragma once

#include "programs/kiv/Command.h"

// The commands that change the configuration of a state directory. A command that is refused changes nothing.
namespace kiv {

// "ip route", "ipv6 route": adds a route, or a via to one.
void addIpRoute(state::State& state, Request const& request);
void addIpv6Route(state::State& state, Request const& request);
// "no ip route", "no ipv6 route": takes away every via, or whole route, that fits all that is said.
void removeIpRoute(state::State& state, Request const& request);
void removeIpv6Route(state::State& state, Request const& request);
// "clear ip route interface", "clear ipv6 route interface": takes away what leads through an interface, in every VRF.
void clearIpRouteInterface(state::State& state, Request const& request);
void clearIpv6RouteInterface(state::State& state, Request const& request);

// Carries out one such command on the state directory that the command line names.
ExitStatus changeConfiguration(Request const& request);
// "configure": all commands of a file, or none.
ExitStatus configureFromFile(Request const& request);

}  // namespace kiv
