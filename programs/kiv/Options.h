#pragma once

#include "programs/command/Source.h"

#include <span>
#include <string>
#include <vector>

namespace kiv {

// Everything on the command line. Options may stand anywhere; "--" ends them.
struct Options {
   std::vector<std::string> words{};  // of the command, without the final "| json"
   Source source{};
   bool json = false;
   bool help = false;
};

// `defaultStateDir` is used when no source is given; empty for the machine's own kernel. Throws UsageError.
Options parseOptions(std::span<char const* const> arguments, std::string const& defaultStateDir);

}  // namespace kiv
