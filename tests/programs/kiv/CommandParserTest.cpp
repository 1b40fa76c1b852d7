#include "programs/kiv/CommandParser.h"

#include "programs/kiv/Commands.h"
#include "tests/programs/kiv/ProgramRun.h"

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

TEST(CommandParser, ReadsCommandsAsTheyAreTyped) {
   for (auto const& [line, result] : testsupport::casesOf("a table of commands")) {
      EXPECT_EQ(parsed(table, line), result);
   }
   for (auto const& [line, result] : testsupport::casesOf("the program's own commands")) {
      EXPECT_EQ(parsed(commands(), line), result);
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
