#include "programs/kiv/Options.h"

#include <gtest/gtest.h>

namespace kiv {
namespace {

// "show ip route; json; snapshot x", or the error.
std::string parsed(std::vector<char const*> const& arguments, std::string const& defaultStateDir = "") {
   try {
      Options const options = parseOptions(arguments, defaultStateDir);
      std::string text;
      for (std::string const& word : options.words) {
         text.append("<").append(word).append(">");
      }
      text.append(options.json ? " json" : "").append(options.help ? " help" : "");
      switch (options.source.kind) {
         case SourceKind::stateDir:
            return text + " state " + options.source.path;
         case SourceKind::snapshot:
            return text + " snapshot " + options.source.path;
         case SourceKind::kernel:
            break;
      }
      return text + " kernel";
   } catch (UsageError const& error) {
      return error.what();
   }
}

TEST(Options, AreTakenFromAnywhereOnTheCommandLine) {
   struct Case {
      std::vector<char const*> arguments;
      char const* result;
   };
   std::vector<Case> const cases{
       {{}, " kernel"},
       {{"show", "ip", "route"}, "<show><ip><route> kernel"},
       {{"show ip  route\t vrf\nred "}, "<show><ip><route><vrf><red> kernel"},
       {{"", " "}, " kernel"},
       {{"--json", "show ip", "route"}, "<show><ip><route> json kernel"},
       {{"show", "ip", "route", "|", "json"}, "<show><ip><route> json kernel"},
       {{"show ip route | json"}, "<show><ip><route> json kernel"},
       {{"show ip route |json"}, "<show><ip><route> json kernel"},
       {{"show", "|", "jso"}, "<show><|><jso> kernel"},
       {{"|", "json", "x"}, "<|><json><x> kernel"},
       {{"load", "x", "--state", "/a b"}, "<load><x> state /a b"},
       {{"--state=/a=b", "x"}, "<x> state /a=b"},
       {{"--snapshot", "--json", "x"}, "<x> snapshot --json"},
       {{"--kernel", "x", "--help"}, "<x> help kernel"},
       {{"--", "--json"}, "<--json> kernel"},
       {{"--state"}, "--state: end of the command line: a name should follow"},
       {{"--state", "a", "--kernel"}, "command line: only one of --state, --snapshot and --kernel can be given"},
       {{"--json=1"}, "--json=1: command line: no such option, see kiv --help"},
       {{"--jso"}, "--jso: command line: no such option, see kiv --help"},
   };
   for (Case const& c : cases) {
      EXPECT_EQ(parsed(c.arguments), c.result);
   }
}

TEST(Options, UseTheDefaultStateDirectoryOnlyWhenNoSourceIsGiven) {
   EXPECT_EQ(parsed({"x"}, "/d"), "<x> state /d");
   EXPECT_EQ(parsed({"x", "--kernel"}, "/d"), "<x> kernel");
   EXPECT_EQ(parsed({"x", "--snapshot", "s"}, "/d"), "<x> snapshot s");
}

}  // namespace
}  // namespace kiv
