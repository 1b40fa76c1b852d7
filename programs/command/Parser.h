#pragma once

#include "programs/command/Command.h"

#include <string>
#include <vector>

// Words into a command. A word that is spelled out is itself only; any other may be the beginning of just one word of a
// command or keyword, else of just one of the words that a parameter can be, else a parameter that is known by its
// form. What was given before does not change what a word means.
namespace kiv {

// The arguments refer to nothing of the words. Throws UsageError.
Request parseCommand(std::span<Command const> commands, std::vector<std::string> const& words);

}  // namespace kiv
