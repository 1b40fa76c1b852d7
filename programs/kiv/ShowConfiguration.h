#pragma once

#include "programs/command/Command.h"

namespace kiv {

// The configured static routes: as a table, "show ip route static configured", and as the commands that configure them,
// "show running-config ip route".
std::span<Command const> showConfigurationCommands();

}  // namespace kiv
