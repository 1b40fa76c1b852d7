#pragma once

#include "programs/command/Parser.h"

#include <deque>
#include <optional>
#include <utility>

namespace testsupport {

// A table of commands whose requests tell, for each clause, the word that it took; each still reads it as it does. The
// one that was made last works.
class Recording {
 public:
   explicit Recording(std::span<kiv::Command const> commands) : commands_(commands.begin(), commands.end()) {
      originals().assign(commands.begin(), commands.end());
      for (std::size_t i = 0; i < commands_.size(); ++i) {
         auto& clauses = clauses_.emplace_back(commands_[i].clauses.begin(), commands_[i].clauses.end());
         for (std::size_t at = 0; at < clauses.size(); ++at) {
            clauses[at].take = takes(std::make_index_sequence<32>())[at];
         }
         commands_[i].clauses = clauses;
         commands_[i].noArguments = starts(std::make_index_sequence<32>())[i];
      }
   }

   // "show ip route vrf=red longer=" for a command and the clauses that were given, in the order of the table, or what
   // is wrong with the words.
   std::string parsed(std::vector<std::string> const& words) const {
      try {
         kiv::Request const request = kiv::parseCommand(commands_, words);
         auto const& taken = std::any_cast<Taken const&>(request.arguments).words;
         std::string text(request.command.words);
         for (auto const& clause : request.command.clauses) {
            if (auto const& word = taken[static_cast<std::size_t>(&clause - request.command.clauses.data())]) {
               text.append(" ").append(clause.name()).append("=").append(*word);
            }
         }
         return text;
      } catch (kiv::UsageError const& error) {
         return error.what();
      }
   }

   std::span<kiv::Command const> commands() const { return commands_; }

 private:
   struct Taken {
      std::size_t command;
      std::any arguments;
      std::array<std::optional<std::string>, 32> words{};
   };
   static std::vector<kiv::Command>& originals() {
      static std::vector<kiv::Command> all;
      return all;
   }
   template <std::size_t... At>
   static std::array<void (*)(std::any&, std::string_view), sizeof...(At)> takes(std::index_sequence<At...>) {
      return {+[](std::any& arguments, std::string_view word) {
         auto& taken = std::any_cast<Taken&>(arguments);
         originals()[taken.command].clauses[At].take(taken.arguments, word);
         taken.words[At] = word;
      }...};
   }
   template <std::size_t... I>
   static std::array<std::any (*)(), sizeof...(I)> starts(std::index_sequence<I...>) {
      return {+[] { return std::any(Taken{I, originals()[I].noArguments()}); }...};
   }

   std::vector<kiv::Command> commands_;
   std::deque<std::vector<kiv::Clause>> clauses_;
};

}  // namespace testsupport
