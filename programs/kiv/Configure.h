#pragma once

#include "programs/command/Command.h"

// The commands that change the configuration of a state directory. A command that is refused changes nothing.
namespace kiv {

// "ip route", "ipv6 route": adds a route, or a via to one. "no ip route", "no ipv6 route": takes away every via, or
// whole route, that fits all that is said. "clear ip route interface", "clear ipv6 route interface": takes away what
// leads through an interface, in every VRF.
std::span<Command const> staticRouteCommands();
// "configure": all commands of a file, or none.
std::span<Command const> configureCommands();

// Carries out one command of the configuration on the state directory of the session.
ExitStatus changeConfiguration(Session& session, Request const& request);

}  // namespace kiv
