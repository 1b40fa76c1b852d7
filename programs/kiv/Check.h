#pragma once

#include "programs/command/Command.h"

namespace kiv {

// May this address, or this route distinguisher, be assigned? What must not be is refused, with the reason.
std::span<Command const> checkCommands();

}  // namespace kiv
