#pragma once

#include "programs/kiv/Command.h"

#include <string>
#include <utility>
#include <vector>

// Words into a command. A word that is spelled out is itself only; any other may be the beginning of just one word of a
// command or keyword, else of just one of the words that a parameter can be, else a parameter that is known by its
// form. What was given before does not change what a word means.
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
