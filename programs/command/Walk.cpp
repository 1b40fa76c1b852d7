#include "programs/command/Walk.h"

#include <algorithm>
#include <iterator>
#include <new>

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

std::string inQuotes(std::string_view text) {
   return '"' + std::string(text) + '"';
}

Choice const* spelledOut(std::string_view word, std::vector<Choice> const& among) {
   auto const found = std::ranges::find(among, word, &Choice::word);
   return found != among.end() ? &*found : nullptr;
}

Choice const* byForm(std::string_view word, std::vector<Choice> const& among) {
   auto const found = std::ranges::find_if(among, [word](Choice const& choice) {
      return choice.word.empty() && choice.clause->accepts != nullptr && choice.clause->accepts(word);
   });
   return found != among.end() ? &*found : nullptr;
}

}  // namespace

Walk::Walk(std::span<Command const> commands, std::vector<std::string> const& words) : words_(words) {
   for (Command const& command : commands) {
      possible_.push_back(&command);
   }
}

Command const& Walk::command() {
   if (pending_ != nullptr) {
      throw UsageError(inQuotes(pending_->keyword) + ": end of " + line() + ": " + std::string(pending_->parameter) +
                       " should follow");
   }
   if (!pendingWord_.empty()) {
      keywordGoesOn();
   }
   Command const* const command = complete();
   if (command == nullptr) {
      missing();
   }
   given_.resize(command->clauses.size());
   if (!arguments_.has_value()) {
      arguments_ = command->noArguments();
   }
   for (std::size_t i = 0; i < given_.size(); ++i) {
      if (command->clauses[i].required && !isGiven(i)) {
         missing();
      }
   }
   for (std::size_t i = 0; i < given_.size(); ++i) {
      if (isGiven(i)) {
         checkNeeds(command->clauses[i], given_[i].at);
      }
   }
   return *command;
}

std::vector<Choice> Walk::next() const {
   std::vector<Choice> found = choices();
   auto const words = parameterWords(found);
   std::erase_if(found, [&](Choice const& choice) {
      return choice.clause == nullptr ? spelledOut(choice.word, words) != nullptr
                                      : isGiven(choice.index) || !goesTogether(*choice.clause);
   });
   auto more = commandWords(alsoLeading_, depth_ + 1);
   found.insert(found.begin(), more.begin(), more.end());
   return found;
}

std::string_view Walk::given(Named named) const {
   Command const* const command = complete();
   for (std::size_t i = 0; i < given_.size(); ++i) {
      if (isGiven(i) && command->clauses[i].named == named && given_[i].at + 1 < words_.size()) {
         return words_[given_[i].at + 1];
      }
   }
   return {};
}

bool Walk::reads(Clause const& clause, std::string_view word) const {
   try {
      std::any arguments = complete()->noArguments();
      clause.take(arguments, word);
      return !clause.keyword.empty() || clause.accepts(word);
   } catch (std::bad_alloc const&) {
      throw;
   } catch (std::exception const&) {
      return false;
   }
}

Command const* Walk::complete() const {
   auto const found =
       std::ranges::find_if(possible_, [&](Command const* c) { return wordAt(c->words, depth_).empty(); });
   return found != possible_.end() ? *found : nullptr;
}

bool Walk::isGiven(Key key) const {
   auto const& clauses = complete()->clauses;
   auto const found = std::ranges::find(clauses, key, &Clause::key);
   return isGiven(static_cast<std::size_t>(found - clauses.begin()));
}

std::string Walk::nameOf(Key key) const {
   return std::string(std::ranges::find(complete()->clauses, key, &Clause::key)->name());
}

// Whether a clause may be added to those that were given. One that must be given may come before what it needs.
bool Walk::goesTogether(Clause const& clause) const {
   auto const given = [&](Key key) { return isGiven(key); };
   if (std::ranges::any_of(clause.excludes, given) ||
       (!clause.required && !clause.needs.empty() && std::ranges::none_of(clause.needs, given))) {
      return false;
   }
   auto const& clauses = complete()->clauses;
   return std::ranges::none_of(clauses, [&](Clause const& other) {
      return isGiven(other.key) && std::ranges::count(other.excludes, clause.key) != 0;
   });
}

std::vector<Choice> Walk::commandWords(std::vector<Command const*> const& commands, std::size_t depth) const {
   std::vector<Choice> found;
   for (Command const* const command : commands) {
      std::string_view const word = wordAt(command->words, depth);
      if (!word.empty() && spelledOut(word, found) == nullptr) {
         bool const last = wordAt(command->words, depth + 1).empty();
         found.push_back({word, last ? command->help : ""});
      }
   }
   return found;
}

// All of them, those that were taken before too.
std::vector<Choice> Walk::choices() const {
   std::vector<Choice> found = clausesOnly_ ? std::vector<Choice>() : commandWords(possible_, depth_);
   if (Command const* const command = complete()) {
      for (std::size_t i = 0; i < command->clauses.size(); ++i) {
         Clause const& clause = command->clauses[i];
         found.push_back({wordAt(clause.keyword, 0), clause.help, &clause, i});
      }
   }
   return found;
}

std::vector<Choice> Walk::parameterWords(std::vector<Choice> const& all) {
   std::vector<Choice> words;
   for (Choice const& choice : all) {
      if (choice.clause != nullptr && choice.clause->keyword.empty()) {
         for (Word const& word : choice.clause->words) {
            words.push_back({word.word, word.help, choice.clause, choice.index, &word});
         }
      }
   }
   return words;
}

// Null when none begins like this; throws when several do.
Choice const* Walk::shortened(std::string_view word, std::vector<Choice> const& among) const {
   Command const* const command = complete();
   bool const onlyCommands = command != nullptr && command->configure != nullptr;
   std::vector<Choice> fitting;
   Choice const* found = nullptr;
   for (Choice const& choice : among) {
      if (!choice.word.empty() && choice.word.starts_with(word) && (choice.clause == nullptr || !onlyCommands)) {
         fitting.push_back(choice);
         found = &choice;
      }
   }
   if (fitting.size() > 1) {
      wrong("ambiguous, could be ", fitting);
   }
   return found;
}

void Walk::step() {
   std::vector<Choice> const all = choices();
   Choice const choice = found(words_[at_], all);
   auto const words = parameterWords(all);
   Choice const* const parameter = spelledOut(choice.word, words);
   if (choice.clause != nullptr || parameter == nullptr || leadsOn(choice)) {
      return take(choice);
   }
   auto const also = leading(choice.word);
   take(*parameter);
   alsoLeading_ = at_ == words_.size() ? also : std::vector<Command const*>();
}

Choice Walk::found(std::string_view word, std::vector<Choice> const& all) const {
   auto const words = parameterWords(all);
   for (Choice const* const choice : {spelledOut(word, all), spelledOut(word, words)}) {
      if (choice != nullptr && !word.empty()) {
         return *choice;
      }
   }
   if (Choice const* const choice = shortened(word, all); choice != nullptr) {
      return *choice;
   }
   if (Choice const* const choice = shortened(word, words); choice != nullptr) {
      return *choice;
   }
   if (Choice const* const choice = byForm(word, all); choice != nullptr) {
      return *choice;
   }
   std::vector<Choice> left;
   std::ranges::copy_if(all, std::back_inserter(left), [&](Choice const& choice) {
      return choice.clause == nullptr ? spelledOut(choice.word, words) == nullptr : !isGiven(choice.index);
   });
   wrong("not known here, expected ", left);
}

std::vector<Command const*> Walk::leading(std::string_view word) const {
   std::vector<Command const*> found;
   std::ranges::copy_if(possible_, std::back_inserter(found),
                        [&](Command const* command) { return wordAt(command->words, depth_) == word; });
   return found;
}

// A word of a command that is also one that a parameter can be is the former when the next word of the command follows.
bool Walk::leadsOn(Choice const& choice) const {
   return std::ranges::any_of(leading(choice.word), [&](Command const* command) {
      std::string_view const next = wordAt(command->words, depth_ + 1);
      return !next.empty() && at_ + 1 < words_.size() && next.starts_with(words_[at_ + 1]);
   });
}

void Walk::take(Choice const& choice) {
   if (choice.clause != nullptr) {
      takeClause(choice);
      return;
   }
   possible_ = leading(choice.word);
   ++depth_;
   ++at_;
}

void Walk::takeClause(Choice const& choice) {
   Clause const& clause = *choice.clause;
   if (isGiven(choice.index)) {
      wrong(std::string(clause.name()) + " given twice");
   }
   clausesOnly_ = true;
   given_.resize(complete()->clauses.size());
   given_[choice.index] = {true, at_};
   if (takeKeyword(clause)) {
      takeParameter(choice);
   }
}

// The first word of it fits already. False when the line ends in its midst.
bool Walk::takeKeyword(Clause const& clause) {
   at_ += clause.keyword.empty() ? 0 : 1;
   for (std::size_t i = 1; !wordAt(clause.keyword, i).empty(); ++i) {
      pendingWord_ = wordAt(clause.keyword, i);
      if (at_ == words_.size()) {
         return false;
      }
      if (words_[at_] != pendingWord_) {
         keywordGoesOn();
      }
      pendingWord_ = {};
      ++at_;
   }
   return true;
}

void Walk::takeParameter(Choice const& choice) {
   Clause const& clause = *choice.clause;
   bool const isBare = clause.parameter.empty();
   if (!isBare && at_ == words_.size()) {
      pending_ = &clause;
      return;
   }
   if (!arguments_.has_value()) {
      arguments_ = complete()->noArguments();
   }
   try {
      clause.take(arguments_, isBare ? "" : choice.one != nullptr ? choice.one->word : words_[at_]);
   } catch (std::exception const& error) {
      wrong(error.what());
   }
   at_ += isBare ? 0 : 1;
}

void Walk::checkNeeds(Clause const& clause, std::size_t at) {
   auto const given = [&](Key key) { return isGiven(key); };
   if (!clause.needs.empty() && std::ranges::none_of(clause.needs, given)) {
      at_ = at;
      std::vector<std::string> names;
      std::ranges::transform(clause.needs, std::back_inserter(names), [&](Key key) { return nameOf(key); });
      wrong("only together with " + alternatives(names));
   }
   if (auto const excluded = std::ranges::find_if(clause.excludes, given); excluded != clause.excludes.end()) {
      at_ = at;
      wrong("not together with " + nameOf(*excluded));
   }
}

void Walk::wrong(std::string_view what, std::vector<Choice> const& choices) const {
   std::vector<std::string> names;
   names.reserve(choices.size());
   for (Choice const& choice : choices) {
      names.emplace_back(choice.word.empty() ? choice.clause->parameter : choice.word);
   }
   wrong(names.empty() ? "too many words" : std::string(what) + alternatives(names));
}

// About the word that the walk is at.
void Walk::wrong(std::string_view what) const {
   throw UsageError(inQuotes(words_[at_]) + ": word " + std::to_string(at_ + 1) + " of " + line() + ": " +
                    std::string(what));
}

// About the word before the one that the walk is at.
void Walk::keywordGoesOn() const {
   throw UsageError(inQuotes(words_[at_ - 1]) + ": word " + std::to_string(at_) + " of " + line() + ": " +
                    std::string(pendingWord_) + " should follow");
}

void Walk::missing() const {
   std::vector<std::string> names;
   for (Choice const& choice : choices()) {
      if (choice.clause == nullptr || (choice.clause->required && !isGiven(choice.index))) {
         names.push_back(choice.clause == nullptr ? std::string(choice.word) : placeholder(*choice.clause));
      }
   }
   throw UsageError(line() + ": at its end: " + alternatives(names) + " should follow");
}

std::string Walk::line() const {
   std::string text;
   for (std::string const& word : words_) {
      text.append(text.empty() ? "" : " ").append(word);
   }
   return text.empty() ? "command line" : inQuotes(text);
}

}  // namespace kiv
