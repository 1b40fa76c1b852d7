#include "programs/kiv/CommandParser.h"

#include "programs/kiv/Commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace kiv {
namespace {

// A table with what the program's own does not have yet: a command within another's words, several clauses, a bare
// keyword, and a free parameter beside keywords.
bool startsWithDigit(std::string_view word) {
   return word.front() >= '0' && word.front() <= '9';
}

constexpr auto routeClauses = std::to_array<Clause>({
    {.keyword = "vrf", .parameter = "NAME", .help = "of a VRF"},
    {.keyword = "protocol", .parameter = "WORD", .help = "of a protocol"},
    {.keyword = "longer-prefixes", .parameter = "", .help = "what is inside"},
    {.keyword = "longest", .parameter = "", .help = "what is outside"},
    {.keyword = "", .parameter = "PREFIX", .help = "a prefix", .accepts = startsWithDigit},
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
       {"show ip route vrf a v b", R"("v": word 6 of "show ip route vrf a v b": given twice)"},
       {"show ip route 10.0.0.0/8 11.0.0.0/8", R"("11.0.0.0/8": word 5 of "show ip route 10.0.0.0/8 11.0.0.0/8": )"
                                               R"(not known here, expected vrf, protocol, longer-prefixes or longest)"},
       // After a clause, no more words of a command.
       {"show ip route vrf a summary", R"("summary": word 6 of "show ip route vrf a summary": )"
                                       R"(not known here, expected protocol, longer-prefixes, longest or PREFIX)"},
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

TEST(CommandParser, KnowsTheProgramsOwnCommands) {
   constexpr auto cases = std::to_array<Case>({
       {"sh ip ro", "show ip route"},
       {"s ipv6 r v red", "show ipv6 route vrf=red"},
       {"load vrf", "load SNAPSHOT=vrf"},
       {"l load", "load SNAPSHOT=load"},
       {"load", R"("load": at its end: SNAPSHOT should follow)"},
       {"load a b", R"("b": word 3 of "load a b": too many words)"},
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
   EXPECT_EQ(next("show ip route"), "summary|vrf NAME|protocol WORD|longer-prefixes|longest|PREFIX");
   EXPECT_EQ(next("show ip route vrf red 10.0.0.0/8"), "protocol WORD|longer-prefixes|longest");
   EXPECT_EQ(next("show ip route summary"), "");
   EXPECT_THROW(next("nonsense"), UsageError);
}

}  // namespace
}  // namespace kiv
