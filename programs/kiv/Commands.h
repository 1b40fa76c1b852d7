#pragma once

#include "programs/command/Command.h"

namespace kiv {

// Every command of the program, in the order in which help tells them.
std::span<Command const> commands();

}  // namespace kiv
