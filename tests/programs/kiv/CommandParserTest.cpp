#include "programs/kiv/CommandParser.h"

#include "programs/kiv/Commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace kiv {
namespace {

// A table with what the program's own does not have yet, a command within another's words and keywords with a common
// beginning, beside all that it has: bare keywords, free parameters and clauses that need others.
bool startsWithDigit(std::string_view word) {
   return word.front() >= '0' && word.front() <= '9';
}

void checkLength(std::string_view word) {
   if (word.size() > 10) {
      throw std::runtime_error("too long");
   }
}

constexpr auto colors = std::to_array<Word>({
    {"red", "R", "like blood"},
    {"reddish", "RD", "nearly"},
    {"violet", "V", "like violets"},
    {"longish", "L", "no color at all"},
});
constexpr auto neededByLongest = std::to_array<std::string_view>({"PREFIX", "COLOR"});

constexpr auto routeClauses = std::to_array<Clause>({
    {.keyword = "vrf", .parameter = "NAME", .help = "of a VRF", .check = checkLength},
    {.keyword = "protocol", .parameter = "WORD", .help = "of a protocol"},
    {.keyword = "longer-prefixes", .parameter = "", .help = "what is inside"},
    {.keyword = "longest", .parameter = "", .help = "what is outside", .needs = neededByLongest},
    {.keyword = "", .parameter = "PREFIX", .help = "a prefix", .accepts = startsWithDigit, .check = checkLength},
    {.keyword = "", .parameter = "COLOR", .help = "a color", .words = colors},
});

ExitStatus nothing(Request const&) {
   return ExitStatus::ok;
}

constexpr auto table = std::to_array<Command>({
    {"show ip route", "routes", routeClauses, nothing},
    {"show ip route summary", "counts", {}, nothing},
    {"show ipv6 route", "routes", {}, nothing},
    {"shutdown", "the end", {}, nothing},
});

std::vector<std::string> split(std::string const& line) {
   std::istringstream in(line);
   return {std::istream_iterator<std::string>(in), {}};
}

// "show ip route; vrf=red longest=" for a command and the clauses that were given, in the order of the table.
std::string parsed(std::span<Command const> commands, std::string const& line) {
   Options options;
   options.words = split(line);
   try {
      Request const request = parseCommand(commands, options);
      std::string text(request.command.words);
      for (Clause const& clause : request.command.clauses) {
         if (auto const& value = request.value(clause.name())) {
            text.append(" ").append(clause.name()).append("=").append(*value);
         }
      }
      return text;
   } catch (UsageError const& error) {
      return error.what();
   }
}

struct Case {
   char const* line;
   char const* result;
};

TEST(CommandParser, ReadsCommandsAsTheyAreTyped) {
   constexpr auto cases = std::to_array<Case>({
       {"show ip route", "show ip route"},
       {"sho i", R"("i": word 2 of "sho i": ambiguous, could be ip or ipv6)"},
       {"sho ip r", "show ip route"},
       {"sho ipv r", "show ipv6 route"},
       {"sh ip r", R"("sh": word 1 of "sh ip r": ambiguous, could be show or shutdown)"},
       {"show ip route summary", "show ip route summary"},
       {"show ip route sum", "show ip route summary"},
       {"show ip route vrf red protocol bgp", "show ip route vrf=red protocol=bgp"},
       {"show ip route protocol bgp vrf red", "show ip route vrf=red protocol=bgp"},
       {"sho ip ro p bgp 10.0.0.0/8 longer v red",
        "show ip route vrf=red protocol=bgp longer-prefixes= PREFIX=10.0.0.0/8"},
       {"show ip route 10.0.0.0/8 longest", "show ip route longest= PREFIX=10.0.0.0/8"},
       // What follows a keyword is its parameter, whatever else it looks like.
       {"show ip route vrf protocol", "show ip route vrf=protocol"},
       {"show ip route vrf 10", "show ip route vrf=10"},
       {"show ip route protocol summary", "show ip route protocol=summary"},
       {"show ip route long",
        R"("long": word 4 of "show ip route long": ambiguous, could be longer-prefixes or longest)"},
       {"show ip route vrf", R"("vrf": end of "show ip route vrf": NAME should follow)"},
       {"show ip route vrf a v b", R"("v": word 6 of "show ip route vrf a v b": vrf given twice)"},
       {"show ip route longer-prefixes longer",
        R"("longer": word 5 of "show ip route longer-prefixes longer": longer-prefixes given twice)"},
       {"show ip route 10.0.0.0/8 11.0.0.0/8",
        R"("11.0.0.0/8": word 5 of "show ip route 10.0.0.0/8 11.0.0.0/8": PREFIX given twice)"},
       // After a clause, no more words of a command.
       {"show ip route vrf a summary",
        R"("summary": word 6 of "show ip route vrf a summary": )"
        R"(not known here, expected protocol, longer-prefixes, longest, PREFIX or COLOR)"},
       {"show ip route summary vrf a", R"("vrf": word 5 of "show ip route summary vrf a": too many words)"},
       {"show ip", R"("show ip": at its end: route should follow)"},
       {"", "command line: at its end: show or shutdown should follow"},
       {"SHOW", R"("SHOW": word 1 of "SHOW": not known here, expected show or shutdown)"},
       {"shows", R"("shows": word 1 of "shows": not known here, expected show or shutdown)"},
   });
   for (Case const& c : cases) {
      EXPECT_EQ(parsed(table, c.line), c.result);
   }
}

// Of the words that a parameter can be, all but those that a keyword begins like.
TEST(CommandParser, KnowsAParameterByItsWords) {
   constexpr auto cases = std::to_array<Case>({
       {"show ip route red", "show ip route COLOR=R"},
       {"show ip route redd", "show ip route COLOR=RD"},
       {"show ip route re", R"("re": word 4 of "show ip route re": ambiguous, could be red or reddish)"},
       {"show ip route vi vrf violet", "show ip route vrf=violet COLOR=V"},
       {"show ip route v violet", "show ip route vrf=violet"},
       {"show ip route longi", "show ip route COLOR=L"},
       {"show ip route lo", R"("lo": word 4 of "show ip route lo": ambiguous, could be longer-prefixes or longest)"},
       {"show ip route red violet", R"("violet": word 5 of "show ip route red violet": COLOR given twice)"},
       // What was given does not change what a word means.
       {"show ip route vrf a v", R"("v": word 6 of "show ip route vrf a v": vrf given twice)"},
       {"show ip route R", R"("R": word 4 of "show ip route R": not known here, )"
                           R"(expected summary, vrf, protocol, longer-prefixes, longest, PREFIX or COLOR)"},
   });
   for (Case const& c : cases) {
      EXPECT_EQ(parsed(table, c.line), c.result);
   }
}

TEST(CommandParser, ChecksParametersAndWhatAClauseNeeds) {
   constexpr auto cases = std::to_array<Case>({
       {"show ip route vrf 12345678901", R"("12345678901": word 5 of "show ip route vrf 12345678901": too long)"},
       {"show ip route 12345678901 vrf a", R"("12345678901": word 4 of "show ip route 12345678901 vrf a": too long)"},
       {"show ip route vrf a longest",
        R"("longest": word 6 of "show ip route vrf a longest": only together with PREFIX or COLOR)"},
       {"show ip route longes vrf a",
        R"("longes": word 4 of "show ip route longes vrf a": only together with PREFIX or COLOR)"},
       {"show ip route longest 1", "show ip route longest= PREFIX=1"},
       {"show ip route violet longest", "show ip route longest= COLOR=V"},
   });
   for (Case const& c : cases) {
      EXPECT_EQ(parsed(table, c.line), c.result);
   }
}

// Whatever the order of the clauses, the request is the same.
TEST(CommandParser, TakesClausesInAnyOrder) {
   std::vector<std::string> clauses{"vrf a", "p bgp", "longer", "longest", "10", "violet"};
   std::ranges::sort(clauses);
   do {
      std::string line = "show ip route";
      for (std::string const& clause : clauses) {
         line.append(" ").append(clause);
      }
      ASSERT_EQ(parsed(table, line), "show ip route vrf=a protocol=bgp longer-prefixes= longest= PREFIX=10 COLOR=V");
   } while (std::ranges::next_permutation(clauses).found);
}

TEST(CommandParser, KnowsTheProgramsOwnCommands) {
   constexpr auto cases = std::to_array<Case>({
       {"sh ip ro", "show ip route"},
       {"s ipv6 r v red", "show ipv6 route vrf=red"},
       {"sh ip ro v red 10.1.1.1 bgp", "show ip route ADDRESS|PREFIX=10.1.1.1 PROTOCOL=B vrf=red"},
       {"sh ip ro vc i eth0 m nexthop ::1", "show ip route PROTOCOL=V nexthop=::1 interface=eth0 matching-vias-only="},
       {"sh ip ro is a", "show ip route PROTOCOL=I all="},
       {"sh ip ro ag l 0.0.0.0/0", "show ip route ADDRESS|PREFIX=0.0.0.0/0 longer-prefixes= PROTOCOL=A"},
       {"sh ip ro l2 nexthop- any", "show ip route PROTOCOL=L2NG nexthop-group=any"},
       {"sh ip ro ospf", "show ip route PROTOCOL=O"},
       {"sh ipv6 ro ospf", "show ipv6 route PROTOCOL=O3"},
       {"load vrf", "load SNAPSHOT=vrf"},
       {"l load", "load SNAPSHOT=load"},
       {"load", R"("load": at its end: SNAPSHOT should follow)"},
       {"load a b", R"("b": word 3 of "load a b": SNAPSHOT given twice)"},
       {"h", "help"},
   });
   for (Case const& c : cases) {
      EXPECT_EQ(parsed(commands(), c.line), c.result);
   }
}

// Every command can be reached by its own words, even when they begin another's.
TEST(CommandParser, EveryCommandIsFoundByItsOwnWords) {
   for (Command const& command : commands()) {
      std::string line(command.words);
      for (Clause const& clause : command.clauses) {
         line.append(clause.required ? " x" : "");
      }
      EXPECT_TRUE(parsed(commands(), line).starts_with(command.words)) << line;
   }
}

TEST(CommandParser, TellsWhatMayFollow) {
   auto const next = [](std::string const& line) {
      std::string text;
      for (Candidate const& candidate : candidates(table, split(line))) {
         text.append(text.empty() ? "" : "|").append(candidate.word);
      }
      return text;
   };
   EXPECT_EQ(next(""), "show|shutdown");
   EXPECT_EQ(next("show"), "ip|ipv6");
   EXPECT_EQ(next("show ip route"),
             "summary|vrf NAME|protocol WORD|longer-prefixes|longest|PREFIX|red|reddish|violet|longish");
   EXPECT_EQ(next("show ip route vrf red 10 red"), "protocol WORD|longer-prefixes|longest");
   EXPECT_EQ(next("show ip route summary"), "");
   EXPECT_THROW(next("nonsense"), UsageError);
}

}  // namespace
}  // namespace kiv
