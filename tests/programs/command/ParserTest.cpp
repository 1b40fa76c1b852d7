#include "Kiv/common/RouteTypeStrings.h"
#include "programs/command/Completion.h"
#include "programs/command/Kinds.h"
#include "programs/kiv/Commands.h"
#include "programs/kiv/Options.h"
#include "state/RouteTypeNames.h"
#include "tests/Vault/VaultTesting.h"
#include "tests/programs/command/Recording.h"
#include "tests/programs/kiv/ProgramRun.h"

namespace kiv {
namespace {

using testsupport::Recording;

// A table with what the program's own does not have yet, a command within another's words and keywords with a common
// beginning, beside all that it has: bare keywords, free parameters and clauses that need others.
struct Short : NameOf<Named::vrf> {
   static bool accepts(std::string_view word) { return word.front() >= '0' && word.front() <= '9'; }
   static std::string read(std::string_view word) {
      return word.size() <= 10 ? std::string(word) : throw std::runtime_error("too long");
   }
};

constexpr auto colors = std::to_array<Word>({
    {"red", "R", "like blood"},
    {"reddish", "RD", "nearly"},
    {"violet", "V", "like violets"},
    {"longish", "L", "no color at all"},
});

struct Arguments {
   std::string vrf{};
   std::string protocol{};
   bool longerPrefixes = false;
   bool longest = false;
   std::string prefix{};
   std::string_view color{};
};

constexpr auto routeClauses = [] {
   using A = Arguments;
   return clauses(
       clause<&A::vrf, Short>({.keyword = "vrf", .help = "of a VRF"}),
       clause<&A::protocol, NameOf<Named::nothing>>(
           {.keyword = "protocol", .parameter = "WORD", .help = "of a protocol"}),
       clause<&A::longerPrefixes>({.keyword = "longer-prefixes", .help = "what is inside"}),
       clause<&A::longest>({.keyword = "longest", .help = "what is outside", .needs = keys<&A::prefix, &A::color>}),
       clause<&A::prefix, Short>({.keyword = "", .parameter = "PREFIX", .help = "a prefix"}),
       clause<&A::color, WordOf<colors>>({.keyword = "", .parameter = "COLOR", .help = "a color"}));
}();

template <class A>
ExitStatus nothing(Session&, A const&) {
   return ExitStatus::ok;
}

constexpr auto table = std::to_array<Command>({
    command<nothing<Arguments>>("show ip route", "routes", routeClauses),
    command<nothing<NoArguments>>("show ip route summary", "counts", noClauses),
    command<nothing<NoArguments>>("show ipv6 route", "routes", noClauses),
    command<nothing<NoArguments>>("shutdown", "the end", noClauses),
});

std::vector<std::string> split(std::string const& line) {
   std::istringstream in(line);
   return {std::istream_iterator<std::string>(in), {}};
}

// "10.0.0.0/8" for a prefix, "host 10.0.0.1/32" for an address, else what is wrong.
template <class Prefix>
std::string requested(std::string const& word) {
   if (!looksLikePrefix(word)) {
      return "another word";
   }
   try {
      auto const request = requestedPrefix<Prefix>(word);
      return (request.hasMask ? "" : "host ") + request.prefix.stringValue();
   } catch (std::invalid_argument const& error) {
      return error.what();
   }
}

// "<show><ip><route> json snapshot x", or the error.
std::string options(std::string arguments, std::string const& defaultStateDir) {
   std::ranges::replace(arguments, ';', '\0');
   std::vector<char const*> each;
   for (std::size_t at = 0; at < arguments.size(); at += std::strlen(each.back()) + 1) {
      each.push_back(arguments.c_str() + at);
   }
   try {
      bool const isDir = !defaultStateDir.empty();
      Options const read =
          parseOptions(each, {.kind = isDir ? SourceKind::stateDir : SourceKind::kernel, .path = defaultStateDir});
      std::string text;
      for (std::string const& word : read.words) {
         text.append("<").append(word).append(">");
      }
      constexpr std::array kinds{" state ", " snapshot ", " kernel"};
      return text + (read.json ? " json" : "") + (read.help ? " help" : "") +
             kinds[static_cast<std::size_t>(read.source.kind)] + read.source.path +
             (read.source.following.kernel && read.words.front() == "follow" ? " follows" : "") +
             (read.source.following.fpm ? " fpm " + *read.source.following.fpm : "");
   } catch (UsageError const& error) {
      return error.what();
   }
}

TEST(Parser, ReadsWhatIsTyped) {
   auto const expect = [](char const* section, auto const& parsed) {
      for (auto const& [line, result] : testsupport::casesOf(section)) {
         EXPECT_EQ(parsed(line), result) << line;
      }
   };
   Recording const small(table);
   expect("a table of commands", [&](std::string const& line) { return small.parsed(split(line)); });
   Recording const own(commands());
   expect("the program's own commands", [&](std::string const& line) { return own.parsed(split(line)); });
   expect("an address or prefix, IPv4 | IPv6", [](std::string const& word) {
      return requested<Lumen::Prefix>(word) + " | " + requested<Lumen::Ip6Prefix>(word);
   });
   expect("arguments, separated by ;", [](std::string const& line) { return options(line, ""); });
   expect("arguments, with a default state directory", [](std::string const& line) { return options(line, "/d"); });
}

// Whatever the order of the clauses, the request is the same.
TEST(Parser, TakesClausesInAnyOrder) {
   Recording const recording(table);
   std::vector<std::string> clauses{"vrf a", "p bgp", "longer", "longest", "10", "violet"};
   std::ranges::sort(clauses);
   do {
      std::string line = "show ip route";
      for (std::string const& clause : clauses) {
         line.append(" ").append(clause);
      }
      ASSERT_EQ(recording.parsed(split(line)),
                "show ip route vrf=a protocol=bgp longer-prefixes= longest= PREFIX=10 COLOR=violet");
   } while (std::ranges::next_permutation(clauses).found);
}

std::vector<Name> boxNames(NamesQuery const& query) {
   static std::map<Named, std::vector<std::string>> const names{{Named::vrf, {"all-of-us", "default", "red"}},
                                                                {Named::interface, {"Ethernet1", "Vlan10"}},
                                                                {Named::nexthopGroup, {"web"}},
                                                                {Named::ipPrefix, {"10.0.0.0/8"}},
                                                                {Named::ip6Prefix, {"2001:db8::/32"}},
                                                                {Named::file, {"a.json"}}};
   std::vector<Name> found;
   for (std::string const& name : names.at(query.named)) {
      if (name.starts_with(query.partial)) {
         found.push_back({name});
      }
   }
   return found;
}

TEST(Completion, TellsWhatMayFollow) {
   for (auto const& [line, expected] : testsupport::casesOf("completion: line, up to the word that was begun")) {
      auto words = split(line);
      std::string const partial = words.empty() || words.back() == "_" ? "" : words.back();
      words.resize(words.empty() ? 0 : words.size() - 1);
      Completion const completion = complete(commands(), words, partial, boxNames);
      std::string text = completion.error;
      for (Candidate const& candidate : completion.candidates) {
         text.append(text.empty() ? "" : "|").append(candidate.text());
      }
      EXPECT_EQ(text, expected) << line;
   }
}

// Whoever types only what is offered never types anything that does not go together, whatever the order; and names that
// cannot be had make no difference to the words.
TEST(Completion, LeadsToCommands) {
   Vault::Testing::Random random(3);
   U32 finished = 0;
   for (U32 i = 0; i < 3000; ++i) {
      std::vector<std::string> words;
      for (U32 at = 0; at < 14; ++at) {
         auto offered = complete(commands(), words, "", boxNames).candidates;
         auto const without = complete(commands(), words, "",
                                       [](auto const&) -> std::vector<Name> { throw std::runtime_error("none"); });
         ASSERT_LE(without.candidates.size(), offered.size());
         std::erase_if(offered, [](Candidate const& candidate) { return candidate.word.empty(); });
         if (offered.empty()) {
            break;
         }
         words.push_back(offered[random.below(static_cast<U32>(offered.size()))].word);
      }
      std::string line;
      for (std::string const& word : words) {
         line.append(word).append(" ");
      }
      try {
         parseCommand(commands(), words);
         ++finished;
      } catch (UsageError const& error) {
         EXPECT_NE(std::string(error.what()).find(" should follow"), std::string::npos) << line << error.what();
      }
   }
   EXPECT_GT(finished, 100U);
}

TEST(Completion, NeverThrows) {
   Vault::Testing::Random random(5);
   std::vector<std::string> vocabulary =
       split("vrf all track bfd leak 10.0.0.0/8 ::/0 | -- ? e\x01 \xff 4294967296 / :");
   vocabulary.emplace_back();
   for (Command const& command : commands()) {
      auto const words = split(std::string(command.words));
      vocabulary.insert(vocabulary.end(), words.begin(), words.end());
   }
   auto const word = [&] { return vocabulary[random.below(static_cast<U32>(vocabulary.size()))]; };
   for (U32 i = 0; i < 20'000; ++i) {
      Command const& command = commands()[random.below(static_cast<U32>(commands().size()))];
      auto words = split(std::string(command.words));
      words.resize(random.below(static_cast<U32>(words.size()) + 1));
      for (U32 more = random.below(5); more > 0; --more) {
         words.push_back(word());
      }
      Completion const completion = complete(commands(), words, word(), boxNames);
      EXPECT_TRUE(completion.error.empty() || completion.candidates.empty());
   }
}

// The library compares codes; users can reach every one of them by a word, and no word asks for what cannot be.
template <class RouteType>
std::set<std::string> protocolCodes() {
   std::set<std::string> codes;
   for (auto const& [type, name] : state::routeTypeNames<RouteType>) {
      if (auto const* const strings = Kiv::routeTypeStringsFind(type)) {
         codes.insert(strings->protocolCode);
      }
   }
   codes.erase("");  // of routes that are never shown
   return codes;
}

std::set<std::string> codesOfWords(std::string_view command) {
   std::set<std::string> codes;
   auto const clauses = std::ranges::find(commands(), command, &Command::words)->clauses;
   for (Word const& word : std::ranges::find(clauses, "PROTOCOL", &Clause::name)->words) {
      codes.emplace(word.value);
   }
   return codes;
}

TEST(Commands, HaveTheProtocolsOfTheirFamily) {
   EXPECT_EQ(codesOfWords("show ip route"), protocolCodes<Routing::Fib::RouteType>());
   EXPECT_EQ(codesOfWords("show ipv6 route"), protocolCodes<Routing6::Fib::RouteType>());
}

// A word that is also a keyword, or the same twice, could never be meant; and a clause needs and excludes only what its
// command has.
TEST(Commands, HaveClausesThatCanBeMeant) {
   for (Command const& command : commands()) {
      std::set<std::string_view> seen;
      for (Clause const& clause : command.clauses) {
         EXPECT_TRUE(seen.insert(clause.name()).second) << command.words << clause.name();
         for (Word const& word : clause.keyword.empty() ? clause.words : std::span<Word const>()) {
            EXPECT_TRUE(seen.insert(word.word).second) << command.words << word.word;
         }
         for (auto const keys : {clause.needs, clause.excludes}) {
            for (Key const key : keys) {
               EXPECT_EQ(std::ranges::count(command.clauses, key, &Clause::key), 1) << command.words << clause.name();
            }
         }
      }
   }
}

}  // namespace
}  // namespace kiv
