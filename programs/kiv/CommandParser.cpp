#include "programs/kiv/CommandParser.h"

#include <algorithm>

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
      values_.resize(command->clauses.size());
      for (std::size_t i = 0; i < values_.size(); ++i) {
         if (command->clauses[i].required && !values_[i]) {
            missing();
         }
      }
      return *command;
   }
   std::vector<std::optional<std::string>> takeValues() { return std::move(values_); }

   std::vector<Candidate> next() const {
      std::vector<Candidate> found;
      for (Choice const& choice : choices()) {
         found.push_back({choice.clause == nullptr ? std::string(choice.word) : placeholder(*choice.clause),
                          std::string(choice.help)});
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
   };

   Command const* complete() const {
      auto const found =
          std::ranges::find_if(possible_, [&](Command const* c) { return wordAt(c->words, depth_).empty(); });
      return found != possible_.end() ? *found : nullptr;
   }

   bool given(std::size_t clause) const { return clause < values_.size() && values_[clause]; }

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
            if (!given(i)) {
               found.push_back({command->clauses[i].keyword, command->clauses[i].help, &command->clauses[i], i});
            }
         }
      }
      return found;
   }

   void step() {
      std::string const& word = words_[at_];
      std::vector<Choice> const all = choices();
      std::vector<Choice> fitting;
      for (Choice const& choice : all) {
         if (!choice.word.empty() && choice.word.starts_with(word)) {
            fitting.push_back(choice);
         }
      }
      auto const exact = std::ranges::find(fitting, word, &Choice::word);
      if (exact != fitting.end()) {
         return take(*exact);
      }
      if (fitting.size() > 1) {
         wrong("ambiguous, could be ", fitting);
      }
      if (fitting.size() == 1) {
         return take(fitting.front());
      }
      for (Choice const& choice : all) {
         if (choice.clause != nullptr && choice.word.empty() && choice.clause->accepts(word)) {
            return take(choice);
         }
      }
      repeated(word);
      wrong("not known here, expected ", all);
   }

   void take(Choice const& choice) {
      if (choice.clause == nullptr) {
         std::erase_if(possible_, [&](Command const* c) { return wordAt(c->words, depth_) != choice.word; });
         ++depth_;
         ++at_;
         return;
      }
      clausesOnly_ = true;
      at_ += choice.word.empty() ? 0 : 1;
      std::string value;
      if (!choice.clause->parameter.empty()) {
         if (at_ == words_.size()) {
            throw UsageError(quoted(choice.word) + ": end of " + line() + ": " + std::string(choice.clause->parameter) +
                             " should follow");
         }
         value = words_[at_++];
      }
      values_.resize(complete()->clauses.size());
      values_[choice.index] = std::move(value);
   }

   // A clause that was given before is not unknown, but once too often.
   void repeated(std::string const& word) const {
      Command const* const command = complete();
      for (std::size_t i = 0; command != nullptr && i < command->clauses.size(); ++i) {
         std::string_view const keyword = command->clauses[i].keyword;
         if (given(i) && !keyword.empty() && keyword.starts_with(word)) {
            throw UsageError(quoted(word) + ": " + where() + ": given twice");
         }
      }
   }

   [[noreturn]] void wrong(std::string_view what, std::vector<Choice> const& choices) const {
      std::vector<std::string> names;
      names.reserve(choices.size());
      for (Choice const& choice : choices) {
         names.emplace_back(choice.word.empty() ? choice.clause->parameter : choice.word);
      }
      std::string const expected = names.empty() ? "too many words" : std::string(what) + alternatives(names);
      throw UsageError(quoted(words_[at_]) + ": " + where() + ": " + expected);
   }

   [[noreturn]] void missing() const {
      std::vector<std::string> names;
      for (Choice const& choice : choices()) {
         if (choice.clause == nullptr || choice.clause->required) {
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
   std::string where() const { return "word " + std::to_string(at_ + 1) + " of " + line(); }

   std::vector<std::string> const& words_;
   std::size_t at_ = 0;
   std::vector<Command const*> possible_;
   std::size_t depth_ = 0;     // how many words of the command are known
   bool clausesOnly_ = false;  // some clause was given, so no more words of a command can follow
   std::vector<std::optional<std::string>> values_;
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
