#include "programs/kiv/Options.h"

#include "tests/programs/kiv/ProgramRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

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
      bool const isSnapshot = options.source.kind == SourceKind::snapshot;
      return options.source.kind == SourceKind::kernel
                 ? text + " kernel"
                 : text + (isSnapshot ? " snapshot " : " state ") + options.source.path;
   } catch (UsageError const& error) {
      return error.what();
   }
}

TEST(Options, AreTakenFromAnywhereOnTheCommandLine) {
   for (auto const& [arguments, result] : testsupport::casesOf("arguments, separated by ;")) {
      std::string zeroed = arguments;
      std::ranges::replace(zeroed, ';', '\0');
      std::vector<char const*> each;
      for (std::size_t at = 0; at < zeroed.size(); at += std::strlen(each.back()) + 1) {
         each.push_back(zeroed.c_str() + at);
      }
      EXPECT_EQ(parsed(each), result);
   }
   EXPECT_EQ(parsed({}), " kernel");
   EXPECT_EQ(parsed({"", " "}), " kernel");
   EXPECT_EQ(parsed({"show ip  route\t vrf\nred "}), "<show><ip><route><vrf><red> kernel");
}

TEST(Options, UseTheDefaultStateDirectoryOnlyWhenNoSourceIsGiven) {
   EXPECT_EQ(parsed({"x"}, "/d"), "<x> state /d");
   EXPECT_EQ(parsed({"x", "--kernel"}, "/d"), "<x> kernel");
   EXPECT_EQ(parsed({"x", "--snapshot", "s"}, "/d"), "<x> snapshot s");
}

}  // namespace
}  // namespace kiv
