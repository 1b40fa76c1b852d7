#pragma once

#include "programs/kiv/Command.h"

#include <string>
#include <vector>

namespace kiv {

ExitStatus help(Request const& request);

// The commands, options and exit statuses.
std::string helpText(std::span<Command const> commands);

// What may follow these words, a line for each. Throws UsageError.
std::string nextText(std::span<Command const> commands, std::vector<std::string> const& words);

}  // namespace kiv
