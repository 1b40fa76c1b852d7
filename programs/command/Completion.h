#pragma once

#include "programs/command/Command.h"

#include <functional>
#include <string>
#include <vector>

namespace kiv {

// What may come next: a word that can be typed as it is, a parameter that can be anything of its kind, or the first
// word of a clause and its parameter.
struct Candidate {
   std::string word;       // empty for a parameter alone
   std::string parameter;  // as users know it; empty for a word alone
   std::string help;

   std::string text() const { return word + (word.empty() || parameter.empty() ? "" : " ") + parameter; }
};

struct Completion {
   std::vector<Candidate> candidates{};
   std::string error{};  // what is wrong with the words before; there are no candidates then
};

// What parameters are called now; it may throw, and there are no names then.
using Names = std::function<std::vector<Name>(NamesQuery const&)>;

// What may follow these words and begins with `partial`: nothing that was given, that does not go together with what
// was given, or that still needs something else. It throws nothing but std::bad_alloc.
Completion complete(std::span<Command const> commands, std::vector<std::string> const& words, std::string_view partial,
                    Names const& names);

}  // namespace kiv
