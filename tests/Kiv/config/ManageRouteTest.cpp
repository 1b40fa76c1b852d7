#include "ConfigTesting.h"
#include "Zam/Toggle.h"

namespace Kiv::Testing {

namespace {

TEST(IsValidPrefixTest, table) {
   for (auto const& [text, refusal] : casesOf("valid prefixes")) {
      auto const parts = partsOf(text);
      auto const helper = helperWithLimit(0);
      EXPECT_EQ(helper->isValidPrefix(parts[0], parts[1] == "unicast"), refusal.empty()) << text;
      EXPECT_EQ(helper->errorMsg().bytes(), refusal) << text;
   }
   auto const helper = helperWithLimit(0);
   helper->isValidPrefix("", true);
   EXPECT_TRUE(helper->isValidPrefix("10.0.0.0/8", true));
   EXPECT_EQ(helper->errorMsg().bytes(), "Mask must be contiguous");  // nothing clears it
   for (char const* const text : {"10.0.0.0", "none", "2001:db8::/32", "10.0.0.0/8 "}) {
      EXPECT_THROW(helper->isValidPrefix(text, false), Zam::ParseError) << text;
   }
}

// In a process of its own each, since the toggle is read once.
TEST(ManageRouteDeathTest, labelInAnotherVrf) {
   GTEST_FLAG_SET(death_test_style, "threadsafe");
   testsupport::TempDir const dir;
   auto const exitWith = [&](char const* toggles, char const* vrf) {
      std::ofstream(dir / "Kiv.json") << toggles;
      ::setenv("KIV_TOGGLE_DIR", (dir / "").c_str(), 1);
      auto const helper = helperWithLimit(0);
      bool const added = Command{.hop = "1.1.1.1", .vrf = vrf, .label = 16}.addTo(routeList(), *helper);
      std::fprintf(stderr, "<%s>", helper->errorMsg().charPtr());
      std::exit(added ? 0 : 1);
   };
   auto const allowed = ::testing::ExitedWithCode(0);
   EXPECT_EXIT(exitWith("{\"MplsPushNdVrf\": false}", "default"), allowed, "<>");
   EXPECT_EXIT(exitWith("{\"MplsPushNdVrf\": true}", "red"), allowed, "<>");
   EXPECT_EXIT(exitWith("{}", "red"), allowed, "<>");
   EXPECT_EXIT(exitWith("{\"MplsPushNdVrf\": false}", "red"), ::testing::ExitedWithCode(1),
               "<Static MPLS routes with push operation is not supported for non-default VRF>");
}

TEST(ToggleTest, damagedFilesAreDefaults) {
   EXPECT_FALSE(Zam::toggleState(" {\n\"b\" : true , \"a\" : false } \n", "a", true));
   for (auto const& [text, state] : casesOf("toggle a")) {
      for (bool const byDefault : {false, true}) {
         EXPECT_EQ(Zam::toggleState(text, "a", byDefault), state == "default" ? byDefault : state == "true") << text;
      }
   }
   testsupport::TempDir const dir;
   ::setenv("KIV_TOGGLE_DIR", (dir / "").c_str(), 1);
   EXPECT_TRUE(Zam::getToggleState("missing.json", "a"));
   std::ofstream(dir / "large.json") << "{\"a\": false" << std::string(1 << 20, ' ') << "}";
   EXPECT_TRUE(Zam::getToggleState("large.json", "a"));
   ::unsetenv("KIV_TOGGLE_DIR");
}

// "drop hop=1.1.1.1 label=16 bfd": the type is first, switches stand alone.
Command commandOf(std::string const& words) {
   Command c;
   auto const parts = partsOf(words);
   constexpr std::array<std::string_view, 5> types{"forward", "drop", "nexthopGroup", "l2NexthopGroup", "cached"};
   c.type = static_cast<RouteType>(std::ranges::find(types, parts.at(0)) - types.begin());
   std::map<std::string_view, std::function<void(std::string const&)>> const clauses{
       {"prefix", [&](auto const& text) { c.prefix = text; }},
       {"hop", [&](auto const& text) { c.hop = text; }},
       {"intf", [&](auto const& text) { c.intf = text; }},
       {"pref", [&](auto const& text) { c.preference = static_cast<U16>(std::stoul(text)); }},
       {"tag", [&](auto const& text) { c.tag = static_cast<U32>(std::stoul(text)); }},
       {"metric", [&](auto const& text) { c.metric = static_cast<U32>(std::stoul(text)); }},
       {"vrf", [&](auto const& text) { c.vrf = text; }},
       {"leak", [&](auto const& text) { c.leakToVrf = text; }},
       {"egress", [&](auto const& text) { c.egressVrf = text; }},
       {"label", [&](auto const& text) { c.label = static_cast<U32>(std::stoul(text)); }},
       {"vtep", [&](auto const& text) { c.vtep = text; }},
       {"vni", [&](auto const& text) { c.vni = static_cast<U32>(std::stoul(text)); }},
       {"mac", [&](auto const& text) { c.mac = text; }},
       {"local", [&](auto const& text) { c.localIntf = text; }},
       {"name", [&](auto const& text) { c.name = text; }},
       {"group", [&](auto const& text) { c.group = text; }},
       {"bypass", [&](auto const&) { c.ribBypass = true; }},
       {"validation", [&](auto const&) { c.validation = true; }},
       {"bfd", [&](auto const&) { c.bfd = true; }}};
   for (auto part = std::next(parts.begin()); part != parts.end(); ++part) {
      auto const equals = std::min(part->find('='), part->size());
      clauses.at(part->substr(0, equals))(part->substr(std::min(equals + 1, part->size())));
   }
   return c;
}

// Commands one after the other, of which the last may be refused or have a value out of its range, and the lines that
// would make what they left.
TEST(ManageRouteTest, commandsAndWhatTheyLeave) {
   for (auto const& [commands, outcome] : casesOf("managed, with room for two vias")) {
      auto const list = routeList();
      auto const helper = helperWithLimit(2);
      std::istringstream in(commands);
      std::string complaint;
      for (std::string command; std::getline(in, command, ';');) {
         EXPECT_EQ(complaint, "") << commands;
         try {
            bool const added = commandOf(command).addTo(list, *helper);
            EXPECT_EQ(helper->errorMsg().empty(), added) << commands;
            complaint = added ? "" : helper->errorMsg().bytes() + "| ";
         } catch (std::exception const& error) {
            EXPECT_TRUE(helper->errorMsg().empty()) << commands;
            complaint = error.what() + std::string(", leaving ") + std::to_string(list->route().size()) + "| ";
         }
      }
      EXPECT_EQ(complaint + onOneLine(StaticRoutesCliSaver().save(list, false, "", {}).bytes()), outcome) << commands;
   }
}

TEST(ClearIntfRoutesTest, leavesWhatHasNothingOfTheInterface) {
   auto const list = routeList();
   auto const helper = helperWithLimit(0);
   for (char const* const command : {"forward prefix=10.2.0.0/16 hop=1.1.1.1 intf=Ethernet1",
                                     "forward prefix=10.2.0.0/16 hop=1.1.1.1 intf=Ethernet10",
                                     "forward prefix=10.3.0.0/16 hop=1.1.1.1 name=kept", "drop prefix=10.4.0.0/16"}) {
      ASSERT_TRUE(commandOf(command).addTo(list, *helper));
   }
   auto const via = through("", "Ethernet1");
   list->routeIs(key("10.6.0.0/16"), RouteType::forward);  // has no vias from the start
   list->routeIs(key("10.7.0.0/16"), RouteType::forward)->viaNextHopNameIs(via, "a name is all that it has");
   list->route(key("10.4.0.0/16"))->viaNextHopNameIs(via, "left over");
   ClearIntfRoutesAndViasHelper().clearIntfRoutesAndViasHelper(list, "");
   ASSERT_EQ(list->route().size(), 5);
   ClearIntfRoutesAndViasHelper().clearIntfRoutesAndViasHelper(list, "Ethernet1");
   EXPECT_EQ(onOneLine(StaticRoutesCliSaver().save(list, false, "", {}).bytes()),
             "10.2.0.0/16 Ethernet10 1.1.1.1;10.3.0.0/16 1.1.1.1 name kept;10.4.0.0/16 Null0;");
   EXPECT_TRUE(list->route().size() == 4 && list->route(key("10.6.0.0/16")) != nullptr);
   EXPECT_TRUE(list->route(key("10.4.0.0/16"))->viaNextHopName().empty());
}

}  // namespace

}  // namespace Kiv::Testing
