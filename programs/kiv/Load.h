#pragma once

#include "programs/command/Command.h"

namespace kiv {

// "load".
std::span<Command const> loadCommands();

}  // namespace kiv
