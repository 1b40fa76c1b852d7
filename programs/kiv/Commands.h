#pragma once

#include "programs/kiv/Command.h"

namespace kiv {

// Every command of the program.
std::span<Command const> commands();

}  // namespace kiv
