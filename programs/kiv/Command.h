#pragma once

#include "programs/kiv/ExitStatus.h"
#include "programs/kiv/Options.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What a command is: its words, the clauses that may follow them in any order, and who carries it out. Parsing and help
// follow from the table in Commands.h, and nothing else knows how a command is spelled.
namespace state {
struct State;
}

namespace kiv {

// One of the words that a parameter can be, and the value that it stands for.
struct Word {
   std::string_view word;
   std::string_view value;
   std::string_view help;
};

// A keyword (or several, one after the other), a keyword with a parameter, or a parameter alone, which is one of some
// words or is known by its form.
struct Clause {
   std::string_view keyword;
   std::string_view parameter;
   std::string_view help;
   bool required = false;
   // For a parameter alone: the words that it can be, or whether a word can be one.
   std::span<Word const> words{};
   bool (*accepts)(std::string_view word) = nullptr;
   // Throws an exception whose text tells what is wrong with a parameter, whatever the state of the box.
   void (*check)(std::string_view parameter) = nullptr;
   // Names of clauses of which one has to be given, too.
   std::span<std::string_view const> needs{};
   // Names of clauses of which none may be given, too.
   std::span<std::string_view const> excludes{};

   std::string_view name() const { return keyword.empty() ? parameter : keyword; }
};

struct Request;

struct Command {
   std::string_view words;
   std::string_view help;
   std::span<Clause const> clauses;
   ExitStatus (*run)(Request const& request);
   // A command of the configuration, which changes it; run() is for the others. Its clauses are not to be shortened: a
   // line that is kept for years must not change its meaning when a keyword is added, and names may begin like one.
   void (*configure)(state::State& state, Request const& request) = nullptr;
};

// A command as the user gave it.
struct Request {
   Command const& command;
   Options const& options;
   std::vector<std::optional<std::string>>
       values;  // in the order of the command's clauses; empty text for a bare keyword

   // Empty when the clause was not given. The name is the clause's keyword, or its parameter when it has none.
   std::optional<std::string> const& value(std::string_view clause) const;
   bool has(std::string_view clause) const { return value(clause).has_value(); }
};

}  // namespace kiv
