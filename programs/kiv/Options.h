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

// `usual` is the source when none is given. Throws UsageError.
Options parseOptions(std::span<char const* const> arguments, Source const& usual);

}  // namespace kiv
