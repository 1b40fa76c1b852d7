#pragma once

#include "programs/kiv/Command.h"

#include <string>
#include <utility>
#include <vector>

// Words into a command. Command words and keywords may be shortened as long as only one fits; a word that is spelled
// out fits itself only.
namespace kiv {

// The clauses' values refer to nothing of the words. Throws UsageError.
Request parseCommand(std::span<Command const> commands, Options const& options);

// A word that may come next, and what it is for.
struct Candidate {
   std::string word;
   std::string help;
};

// What may follow these words. Throws UsageError when they are no command's beginning.
std::vector<Candidate> candidates(std::span<Command const> commands, std::vector<std::string> const& words);

}  // namespace kiv
