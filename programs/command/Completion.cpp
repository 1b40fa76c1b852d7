#include "programs/command/Completion.h"

#include "L3/VrfName.h"
#include "programs/command/Walk.h"

#include <new>

namespace kiv {
namespace {

class Candidates {
 public:
   Candidates(Walk const& walk, std::string_view partial, Names const& names)
       : walk_(walk),
         partial_(partial),
         names_(names) {}

   std::vector<Candidate> found() && {
      if (!walk_.pendingWord().empty()) {
         addWord(walk_.pendingWord(), {}, {});
      } else if (walk_.pending() != nullptr) {
         addParameter(*walk_.pending(), true);
      } else {
         for (Choice const& choice : walk_.next()) {
            add(choice);
         }
      }
      return std::move(found_);
   }

 private:
   void add(Choice const& choice) {
      if (choice.clause == nullptr) {
         addWord(choice.word, {}, choice.help);
      } else if (choice.word.empty()) {
         bool const fits = choice.clause->accepts != nullptr && (partial_.empty() || choice.clause->accepts(partial_));
         addParameter(*choice.clause, fits);
      } else {
         std::string_view const rest = choice.clause->keyword.substr(choice.word.size());
         std::string what(rest.empty() ? rest : rest.substr(1));
         what.append(what.empty() || choice.clause->parameter.empty() ? "" : " ").append(choice.clause->parameter);
         addWord(choice.word, std::move(what), choice.help);
      }
   }

   void addWord(std::string_view word, std::string parameter, std::string_view help) {
      if (word.starts_with(partial_)) {
         found_.push_back({std::string(word), std::move(parameter), std::string(help)});
      }
   }

   // A parameter that may stand here: as a whole unless it is just one of some words, and by each of its words and
   // names.
   void addParameter(Clause const& clause, bool asWhole) {
      if (asWhole) {
         found_.push_back({{}, std::string(clause.parameter), std::string(clause.help)});
      }
      for (Word const& word : clause.words) {
         addWord(word.word, {}, word.help);
      }
      if (clause.named != Named::nothing) {
         for (Name& name : namesOf(clause.named)) {
            if (walk_.reads(clause, name.name)) {
               found_.push_back({std::move(name.name), {}, std::move(name.help)});
            }
         }
      }
   }

   std::vector<Name> namesOf(Named named) const {
      bool const isPrefix = named == Named::ipPrefix || named == Named::ip6Prefix;
      if (isPrefix && partial_.empty()) {
         return {};  // there may be a million
      }
      std::string_view const vrf = walk_.given(Named::vrf);
      try {
         return names_({named, partial_, vrf.empty() ? L3::VrfName::defaultVrf : vrf});
      } catch (std::bad_alloc const&) {
         throw;
      } catch (std::exception const&) {
         return {};
      }
   }

   Walk const& walk_;
   std::string_view partial_;
   Names const& names_;
   std::vector<Candidate> found_;
};

}  // namespace

Completion complete(std::span<Command const> commands, std::vector<std::string> const& words, std::string_view partial,
                    Names const& names) {
   try {
      Walk walk(commands, words);
      walk.run();
      return {Candidates(walk, partial, names).found(), {}};
   } catch (UsageError const& error) {
      return {{}, error.what()};
   }
}

}  // namespace kiv
