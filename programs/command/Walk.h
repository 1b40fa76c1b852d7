#pragma once

#include "programs/command/Command.h"

#include <any>
#include <string>
#include <vector>

namespace kiv {

// One way to go on at a place of a command line: a word of a command, or a clause.
struct Choice {
   std::string_view word;
   std::string_view help{};
   Clause const* clause = nullptr;
   std::size_t index = 0;
   Word const* one = nullptr;  // of the words that the clause's parameter can be
};

// Walks along the words of a command line. At every point it knows which commands are still possible, and once one is
// complete, which of its clauses were given. The words may end anywhere. What is wrong is a UsageError.
class Walk {
 public:
   Walk(std::span<Command const> commands, std::vector<std::string> const& words);

   void run() {
      while (at_ < words_.size()) {
         step();
      }
   }

   // The complete command; throws when something is missing, or does not go together.
   Command const& command();
   std::any takeArguments() { return std::move(arguments_); }

   // The clause whose parameter should follow the last word, or null.
   Clause const* pending() const { return pending_; }
   // The word that should follow the last one inside a keyword, or nothing.
   std::string_view pendingWord() const { return pendingWord_; }
   // All ways to go on that nothing that was given stands against.
   std::vector<Choice> next() const;
   // What was given for a clause that has such names; empty when there was none.
   std::string_view given(Named named) const;
   // Whether a word can be the parameter of a clause of the complete command.
   bool reads(Clause const& clause, std::string_view word) const;

 private:
   struct Given {
      bool isGiven = false;
      std::size_t at = 0;  // the word that it began with
   };

   Command const* complete() const;
   bool isGiven(std::size_t clause) const { return clause < given_.size() && given_[clause].isGiven; }
   bool isGiven(Key key) const;
   bool goesTogether(Clause const& clause) const;
   std::string nameOf(Key key) const;
   std::vector<Choice> choices() const;
   std::vector<Choice> commandWords(std::vector<Command const*> const& commands, std::size_t depth) const;
   static std::vector<Choice> parameterWords(std::vector<Choice> const& all);
   Choice const* shortened(std::string_view word, std::vector<Choice> const& among) const;

   void step();
   Choice found(std::string_view word, std::vector<Choice> const& all) const;
   bool leadsOn(Choice const& choice) const;
   std::vector<Command const*> leading(std::string_view word) const;
   void take(Choice const& choice);
   void takeClause(Choice const& choice);
   bool takeKeyword(Clause const& clause);
   void takeParameter(Choice const& choice);
   void checkNeeds(Clause const& clause, std::size_t at);

   [[noreturn]] void wrong(std::string_view what, std::vector<Choice> const& choices) const;
   [[noreturn]] void wrong(std::string_view what) const;
   [[noreturn]] void keywordGoesOn() const;
   [[noreturn]] void missing() const;
   std::string line() const;

   std::vector<std::string> const& words_;
   std::size_t at_ = 0;
   std::vector<Command const*> possible_;
   std::size_t depth_ = 0;     // how many words of the command are known
   bool clausesOnly_ = false;  // some clause was given, so no more words of a command can follow
   std::vector<Given> given_;  // in the order of the command's clauses
   std::any arguments_;
   Clause const* pending_ = nullptr;
   std::string_view pendingWord_{};
   std::vector<Command const*> alsoLeading_{};  // commands whose word the last word is as well
};

}  // namespace kiv
