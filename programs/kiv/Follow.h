#pragma once

#include "programs/command/Command.h"

namespace kiv {

// "follow" and "show state".
std::span<Command const> followCommands();

}  // namespace kiv
