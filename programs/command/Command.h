#pragma once

#include "programs/command/Errors.h"
#include "programs/command/ExitStatus.h"
#include "programs/command/Names.h"

#include <any>
#include <array>
#include <concepts>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// What a command is: its words, the clauses that may follow them in any order, and who carries it out. A clause stands
// for a member of the command's arguments and reads what is typed into it by its kind; parsing, completion and help
// follow from the table of commands, and nothing else knows how a command is spelled.
namespace state {
struct State;
}

namespace kiv {

class Session;

// One of the words that a parameter can be, and the value that it stands for.
struct Word {
   std::string_view word;
   std::string_view value;
   std::string_view help;
};

// A clause as another one names it: by the member of the arguments that it is for.
using Key = char const*;
template <auto Member>
inline constexpr char keyOf = 0;
template <auto... Members>
inline constexpr std::array<Key, sizeof...(Members)> keys{&keyOf<Members>...};

// A keyword (or several, one after the other), a keyword with a parameter, or a parameter alone, which is one of some
// words or is known by its form.
struct Clause {
   std::string_view keyword;
   std::string_view parameter{};  // as users know it; that of the kind unless it is said
   std::string_view help;
   bool required = false;
   // Clauses of which one has to be given, too, and clauses of which none may be.
   std::span<Key const> needs{};
   std::span<Key const> excludes{};

   // What the kind of the parameter tells; see Kinds.h.
   std::span<Word const> words{};
   Named named = Named::nothing;
   bool (*accepts)(std::string_view word) = nullptr;

   Key key = nullptr;
   // Throws an exception whose text tells what is wrong with a parameter, whatever the state of the box.
   void (*take)(std::any& arguments, std::string_view word) = nullptr;

   std::string_view name() const { return keyword.empty() ? parameter : keyword; }
};

// The clauses of a command with arguments of one type.
template <class Arguments, std::size_t Size>
struct Clauses {
   std::array<Clause, Size> list;
};

namespace detail {
template <auto Member>
struct MemberOf;
template <class Arguments, class T, T Arguments::*Member>
struct MemberOf<Member> {
   using ArgumentsType = Arguments;
   using Type = T;
};
template <auto Member>
using ArgumentsOf = typename MemberOf<Member>::ArgumentsType;
}  // namespace detail

template <class Arguments>
struct ClauseOf : Clause {};

// A keyword alone.
template <auto Member>
constexpr ClauseOf<detail::ArgumentsOf<Member>> clause(Clause clause) {
   using Arguments = detail::ArgumentsOf<Member>;
   static_assert(std::same_as<typename detail::MemberOf<Member>::Type, bool>);
   clause.key = &keyOf<Member>;
   clause.take = [](std::any& arguments, std::string_view) { std::any_cast<Arguments&>(arguments).*Member = true; };
   return {clause};
}

// With a parameter of a kind, whose value the member takes.
template <auto Member, class Kind>
constexpr ClauseOf<detail::ArgumentsOf<Member>> clause(Clause clause) {
   using Arguments = detail::ArgumentsOf<Member>;
   clause.key = &keyOf<Member>;
   clause.take = [](std::any& arguments, std::string_view word) {
      std::any_cast<Arguments&>(arguments).*Member = Kind::read(word);
   };
   clause.parameter = clause.parameter.empty() ? Kind::name : clause.parameter;
   clause.named = Kind::named;
   if constexpr (requires { Kind::words; }) {
      clause.words = Kind::words;
   }
   if constexpr (requires { Kind::accepts; }) {
      clause.accepts = Kind::accepts;
   }
   return {clause};
}

template <class Arguments, class... More>
requires(std::same_as<ClauseOf<Arguments>, More>&&...)  //
    constexpr Clauses<Arguments, 1 + sizeof...(More)> clauses(ClauseOf<Arguments> first, More... more) {
   return {{first, more...}};
}

struct NoArguments {};
inline constexpr Clauses<NoArguments, 0> noClauses{};

struct Request;

struct Command {
   std::string_view words;
   std::string_view help;
   std::span<Clause const> clauses;
   std::any (*noArguments)();
   ExitStatus (*run)(Session& session, Request const& request);
   // A command of the configuration, which changes it. Its clauses are not to be shortened: a line that is kept for
   // years must not change its meaning when a keyword is added, and names may begin like one.
   void (*configure)(state::State& state, Request const& request) = nullptr;
   bool hasModel = false;  // writes JSON when asked to
};

// A command as the user gave it.
struct Request {
   Command const& command;
   std::any arguments;

   ExitStatus run(Session& session) const;
   void configure(state::State& state) const;
};

// A command that `Run` carries out: ExitStatus Run(Session&, Arguments const&).
template <auto Run, class Arguments, std::size_t Size>
constexpr Command command(std::string_view words, std::string_view help, Clauses<Arguments, Size> const& clauses) {
   return {
       .words = words,
       .help = help,
       .clauses = clauses.list,
       .noArguments = [] { return std::any(Arguments{}); },
       .run = [](Session& session,
                 Request const& request) { return Run(session, std::any_cast<Arguments const&>(request.arguments)); }};
}

// The same for one that can write JSON.
template <auto Run, class Arguments, std::size_t Size>
constexpr Command display(std::string_view words, std::string_view help, Clauses<Arguments, Size> const& clauses) {
   Command made = command<Run>(words, help, clauses);
   made.hasModel = true;
   return made;
}

// A command of the configuration: void Configure(state::State&, Arguments const&). `change` carries any such command
// out on the state directory of a session.
template <auto Configure, class Arguments, std::size_t Size>
constexpr Command configuration(std::string_view words, std::string_view help, Clauses<Arguments, Size> const& clauses,
                                ExitStatus (*change)(Session&, Request const&)) {
   return {.words = words,
           .help = help,
           .clauses = clauses.list,
           .noArguments = [] { return std::any(Arguments{}); },
           .run = change,
           .configure =
               [](state::State& state, Request const& request) {
                  Configure(state, std::any_cast<Arguments const&>(request.arguments));
               }};
}

}  // namespace kiv
