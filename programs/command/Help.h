#pragma once

#include "programs/command/Completion.h"

#include <string>
#include <vector>

namespace kiv {

// The commands with every word, in two columns.
std::string helpText(std::span<Command const> commands);

// What may follow these words, a line for each. Throws UsageError when they are no command's beginning.
std::string nextText(std::span<Command const> commands, std::vector<std::string> const& words, Names const& names);

}  // namespace kiv
