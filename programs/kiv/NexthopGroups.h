#pragma once

#include "programs/command/Command.h"

namespace kiv {

// "show nexthop-group", "clear nexthop-group counters".
std::span<Command const> nexthopGroupCommands();

}  // namespace kiv
