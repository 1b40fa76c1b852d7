#pragma once

#include "programs/command/Command.h"

#include <span>

namespace kiv {

// Runs one command line (without the program's name) and answers with the exit status. Every failure becomes one line
// on stderr.
int runProgram(std::span<char const* const> arguments);

// "help".
std::span<Command const> programCommands();

}  // namespace kiv
