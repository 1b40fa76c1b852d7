#pragma once

#include "programs/command/Command.h"

namespace kiv {

// "show ip route", "show ipv6 route".
std::span<Command const> routeCommands();

}  // namespace kiv
