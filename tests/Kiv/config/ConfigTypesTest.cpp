#include "ConfigTesting.h"

namespace Kiv::Testing {

namespace {

using Lumen::RouteDistinguisher;

using InputDir = RdAssignmentChecker::InputDir;

RouteDistinguisher rd(std::string_view text) {
   return RouteDistinguisher::parse(text);
}

// From the names of VRFs and what each is assigned; green has another one in every input.
Zam::Ptr<InputDir> dirOf(std::string const& assignments) {
   auto const dir = Zam::makePtr<InputDir>();
   auto const parts = partsOf(assignments);
   for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
      auto const input = Zam::makePtr<Ip::RouteDistinguisherInput>();
      input->routeDistinguisherIs(parts[i], rd(parts[i + 1]));
      input->routeDistinguisherIs("green", rd("7:7"));
      dir->entityIs("input" + std::to_string(dir->size()), input);
   }
   return dir;
}

TEST(RdAssignmentCheckerTest, table) {
   for (auto const& [text, complaint] : casesOf("1:1 for VRF red: assigned automatically | configured")) {
      auto const bar = text.find('|');
      RdAssignmentChecker const checker(dirOf(text.substr(0, bar)), dirOf(text.substr(bar + 1)), "red", rd("1:1"));
      EXPECT_EQ(checker.acceptable, complaint.empty()) << text;
      EXPECT_EQ(checker.errorMessage.bytes(), complaint) << text;
   }
   EXPECT_TRUE(RdAssignmentChecker(nullptr, nullptr, "red", rd("1:1")).acceptable);
}

TEST(ProtocolCodeWordTest, theFirstTypeWhoseWordBeginsIt) {
   for (auto const& [word, code] : casesOf("protocol code words")) {
      EXPECT_EQ(ProtocolCodeWordHelper::protocolCodeWordToCode(word).bytes(), code) << word;
   }
}

TEST(RouteSortKeyTest, orderLeavesTheFamilyOut) {
   std::vector<RouteSortKey> keys;
   for (char const* const prefix :
        {"0.0.0.0/0", "10.0.0.0/8", "10.0.0.0/16", "2001:db8::/32", "2001:db8::/48", "none"}) {
      keys.push_back({{}, Lumen::IpGenPrefix::parse(prefix), 1});
      keys.push_back({{}, Lumen::IpGenPrefix::parse(prefix), 2});
   }
   for (std::size_t i = 0; i < keys.size(); ++i) {
      for (std::size_t j = 0; j < keys.size(); ++j) {
         EXPECT_EQ(keys[i] < keys[j], i < j) << keys[i] << keys[j];
         EXPECT_TRUE(i >= j || keys[i].sortWord() <= keys[j].sortWord()) << keys[i] << keys[j];
      }
   }
   RouteSortKey const ip4{{}, Lumen::IpGenPrefix::parse("0.0.0.0/0"), 1};
   RouteSortKey const ip6{{}, Lumen::IpGenPrefix::parse("::/0"), 1};
   EXPECT_TRUE(!(ip4 < ip6) && !(ip6 < ip4) && ip4 != ip6);
}

}  // namespace

}  // namespace Kiv::Testing
