#include "programs/kiv/CommandParser.h"

#include <algorithm>
#include <iterator>

namespace kiv {
namespace {

// The next word after the first `depth` blanks-separated ones; empty when there is none.
std::string_view wordAt(std::string_view words, std::size_t depth) {
   for (; depth > 0; --depth) {
      std::size_t const blank = words.find(' ');
      if (blank == std::string_view::npos) {
         return {};
      }
      words.remove_prefix(blank + 1);
   }
   return words.substr(0, words.find(' '));
}

std::string placeholder(Clause const& clause) {
   std::string text(clause.keyword);
   if (!clause.parameter.empty()) {
      text.append(text.empty() ? "" : " ").append(clause.parameter);
   }
   return text;
}

// "a", "a or b", "a, b or c".
std::string alternatives(std::vector<std::string> const& words) {
   std::string text;
   for (std::size_t i = 0; i < words.size(); ++i) {
      text.append(i == 0 ? "" : i + 1 == words.size() ? " or " : ", ").append(words[i]);
   }
   return text;
}

// Walks along the words of a command line. At every point it knows which commands are still possible, and once one is
// complete, which of its clauses were given.
class Walk {
 public:
   Walk(std::span<Command const> commands, std::vector<std::string> const& words) : words_(words) {
      for (Command const& command : commands) {
         possible_.push_back(&command);
      }
   }

   void run() {
      while (at_ < words_.size()) {
         step();
      }
   }

   // The complete command; throws when something is missing.
   Command const& command() {
      Command const* const command = complete();
      if (command == nullptr) {
         missing();
      }
      given_.resize(command->clauses.size());
      for (std::size_t i = 0; i < given_.size(); ++i) {
         if (command->clauses[i].required && !given_[i].value) {
            missing();
         }
      }
      for (std::size_t i = 0; i < given_.size(); ++i) {
         if (given_[i].value) {
            checkNeeds(command->clauses[i], given_[i].at);
         }
      }
      return *command;
   }

   std::vector<std::optional<std::string>> takeValues() {
      std::vector<std::optional<std::string>> values;
      values.reserve(given_.size());
      for (Given& clause : given_) {
         values.push_back(std::move(clause.value));
      }
      return values;
   }

   std::vector<Candidate> next() const {
      std::vector<Candidate> found;
      for (Choice const& choice : choices()) {
         if (choice.clause == nullptr) {
            found.push_back({std::string(choice.word), std::string(choice.help)});
         } else if (!isGiven(choice.index)) {
            addCandidates(*choice.clause, found);
         }
      }
      return found;
   }

 private:
   // One way to go on: a word of a command, or a clause.
   struct Choice {
      std::string_view word;
      std::string_view help{};
      Clause const* clause = nullptr;
      std::size_t index = 0;
      Word const* one = nullptr;  // of the words that the clause's parameter can be
   };
   struct Given {
      std::optional<std::string> value{};
      std::size_t at = 0;  // the word that it began with
   };

   Command const* complete() const {
      auto const found =
          std::ranges::find_if(possible_, [&](Command const* c) { return wordAt(c->words, depth_).empty(); });
      return found != possible_.end() ? *found : nullptr;
   }

   bool isGiven(std::size_t clause) const { return clause < given_.size() && given_[clause].value; }

   // All of them, those that were taken before too.
   std::vector<Choice> choices() const {
      std::vector<Choice> found;
      for (Command const* const command : possible_) {
         std::string_view const word = clausesOnly_ ? "" : wordAt(command->words, depth_);
         auto const same = std::ranges::find(found, word, &Choice::word);
         if (!word.empty() && same == found.end()) {
            bool const last = wordAt(command->words, depth_ + 1).empty();
            found.push_back({word, last ? command->help : ""});
         }
      }
      if (Command const* const command = complete()) {
         for (std::size_t i = 0; i < command->clauses.size(); ++i) {
            Clause const& clause = command->clauses[i];
            found.push_back({wordAt(clause.keyword, 0), clause.help, &clause, i});
         }
      }
      return found;
   }

   static std::vector<Choice> parameterWords(std::vector<Choice> const& all) {
      std::vector<Choice> words;
      for (Choice const& choice : all) {
         if (choice.clause != nullptr) {
            for (Word const& word : choice.clause->words) {
               words.push_back({word.word, word.help, choice.clause, choice.index, &word});
            }
         }
      }
      return words;
   }

   static Choice const* spelledOut(std::string_view word, std::vector<Choice> const& among) {
      auto const found = std::ranges::find(among, word, &Choice::word);
      return found != among.end() ? &*found : nullptr;
   }

   // Null when none begins like this; throws when several do.
   Choice const* shortened(std::string_view word, std::vector<Choice> const& among) const {
      Command const* const command = complete();
      bool const onlyCommands = command != nullptr && command->configure != nullptr;
      std::vector<Choice> fitting;
      Choice const* found = nullptr;
      for (Choice const& choice : among) {
         if (choice.word.starts_with(word) && (choice.clause == nullptr || !onlyCommands)) {
            fitting.push_back(choice);
            found = &choice;
         }
      }
      if (fitting.size() > 1) {
         wrong("ambiguous, could be ", fitting);
      }
      return found;
   }

   static Choice const* byForm(std::string_view word, std::vector<Choice> const& among) {
      auto const found = std::ranges::find_if(among, [word](Choice const& choice) {
         return choice.clause != nullptr && choice.clause->accepts != nullptr && choice.clause->accepts(word);
      });
      return found != among.end() ? &*found : nullptr;
   }

   void step() {
      std::string_view const word = words_[at_];
      std::vector<Choice> all = choices();
      std::vector<Choice> const words = parameterWords(all);
      std::erase_if(all, [&](Choice const& choice) { return spelledOut(choice.word, words) && !leadsOn(choice); });
      for (Choice const* const choice : {spelledOut(word, all), spelledOut(word, words)}) {
         if (choice != nullptr) {
            return take(*choice);
         }
      }
      if (Choice const* choice = shortened(word, all); choice != nullptr) {
         return take(*choice);
      }
      if (Choice const* choice = shortened(word, words); choice != nullptr) {
         return take(*choice);
      }
      if (Choice const* choice = byForm(word, all); choice != nullptr) {
         return take(*choice);
      }
      std::vector<Choice> left;
      std::ranges::copy_if(all, std::back_inserter(left),
                           [&](Choice const& choice) { return choice.clause == nullptr || !isGiven(choice.index); });
      wrong("not known here, expected ", left);
   }

   // A word of a command that is also one that a parameter can be is the former when the next word of the command
   // follows.
   bool leadsOn(Choice const& choice) const {
      return choice.clause != nullptr || std::ranges::any_of(possible_, [&](Command const* command) {
                std::string_view const next = wordAt(command->words, depth_ + 1);
                return wordAt(command->words, depth_) == choice.word && !next.empty() && at_ + 1 < words_.size() &&
                       next.starts_with(words_[at_ + 1]);
             });
   }

   void take(Choice const& choice) {
      if (choice.clause != nullptr) {
         takeClause(choice);
         return;
      }
      std::erase_if(possible_, [&](Command const* c) { return wordAt(c->words, depth_) != choice.word; });
      ++depth_;
      ++at_;
   }

   void takeClause(Choice const& choice) {
      Clause const& clause = *choice.clause;
      if (isGiven(choice.index)) {
         wrong(std::string(clause.name()) + " given twice");
      }
      clausesOnly_ = true;
      given_.resize(complete()->clauses.size());
      given_[choice.index].at = at_;
      takeKeyword(clause);
      given_[choice.index].value = clause.parameter.empty() ? "" : takeParameter(choice);
   }

   // The first word of it fits already.
   void takeKeyword(Clause const& clause) {
      at_ += clause.keyword.empty() ? 0 : 1;
      for (std::size_t i = 1; !wordAt(clause.keyword, i).empty(); ++i) {
         if (at_ == words_.size() || words_[at_] != wordAt(clause.keyword, i)) {
            throw UsageError(quoted(words_[at_ - 1]) + ": word " + std::to_string(at_) + " of " + line() + ": " +
                             std::string(wordAt(clause.keyword, i)) + " should follow");
         }
         ++at_;
      }
   }

   std::string takeParameter(Choice const& choice) {
      Clause const& clause = *choice.clause;
      if (at_ == words_.size()) {
         throw UsageError(quoted(clause.keyword) + ": end of " + line() + ": " + std::string(clause.parameter) +
                          " should follow");
      }
      std::string value(choice.one != nullptr ? choice.one->value : words_[at_]);
      if (clause.check != nullptr) {
         try {
            clause.check(value);
         } catch (std::exception const& error) {
            wrong(error.what());
         }
      }
      ++at_;
      return value;
   }

   void checkNeeds(Clause const& clause, std::size_t at) {
      auto const& clauses = complete()->clauses;
      auto const fulfils = [&](std::string_view name) {
         auto const found = std::ranges::find(clauses, name, &Clause::name);
         return isGiven(static_cast<std::size_t>(found - clauses.begin()));
      };
      if (!clause.needs.empty() && std::ranges::none_of(clause.needs, fulfils)) {
         at_ = at;
         wrong("only together with " + alternatives({clause.needs.begin(), clause.needs.end()}));
      }
      if (auto const excluded = std::ranges::find_if(clause.excludes, fulfils); excluded != clause.excludes.end()) {
         at_ = at;
         wrong("not together with " + std::string(*excluded));
      }
   }

   static void addCandidates(Clause const& clause, std::vector<Candidate>& found) {
      if (clause.words.empty()) {
         found.push_back({placeholder(clause), std::string(clause.help)});
      }
      for (Word const& word : clause.words) {
         found.push_back({std::string(word.word), std::string(word.help)});
      }
   }

   [[noreturn]] void wrong(std::string_view what, std::vector<Choice> const& choices) const {
      std::vector<std::string> names;
      names.reserve(choices.size());
      for (Choice const& choice : choices) {
         names.emplace_back(choice.word.empty() ? choice.clause->parameter : choice.word);
      }
      wrong(names.empty() ? "too many words" : std::string(what) + alternatives(names));
   }

   // About the word that the walk is at.
   [[noreturn]] void wrong(std::string_view what) const {
      throw UsageError(quoted(words_[at_]) + ": word " + std::to_string(at_ + 1) + " of " + line() + ": " +
                       std::string(what));
   }

   [[noreturn]] void missing() const {
      std::vector<std::string> names;
      for (Choice const& choice : choices()) {
         if (choice.clause == nullptr || (choice.clause->required && !isGiven(choice.index))) {
            names.push_back(choice.clause == nullptr ? std::string(choice.word) : placeholder(*choice.clause));
         }
      }
      throw UsageError(line() + ": at its end: " + alternatives(names) + " should follow");
   }

   static std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }
   std::string line() const {
      std::string text;
      for (std::string const& word : words_) {
         text.append(text.empty() ? "" : " ").append(word);
      }
      return text.empty() ? "command line" : quoted(text);
   }

   std::vector<std::string> const& words_;
   std::size_t at_ = 0;
   std::vector<Command const*> possible_;
   std::size_t depth_ = 0;     // how many words of the command are known
   bool clausesOnly_ = false;  // some clause was given, so no more words of a command can follow
   std::vector<Given> given_;  // in the order of the command's clauses
};

}  // namespace

std::optional<std::string> const& Request::value(std::string_view clause) const {
   auto const found = std::ranges::find(command.clauses, clause, &Clause::name);
   return values.at(static_cast<std::size_t>(found - command.clauses.begin()));
}

Request parseCommand(std::span<Command const> commands, Options const& options) {
   Walk walk(commands, options.words);
   walk.run();
   Command const& command = walk.command();
   return {command, options, walk.takeValues()};
}

std::vector<Candidate> candidates(std::span<Command const> commands, std::vector<std::string> const& words) {
   Walk walk(commands, words);
   walk.run();
   return walk.next();
}

}  // namespace kiv
