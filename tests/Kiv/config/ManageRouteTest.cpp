#include "ConfigTesting.h"
#include "Zam/Toggle.h"

namespace Kiv::Testing {

namespace {

using testsupport::complaintOf;

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

// What is raised after the route was made leaves it, with as much as was done.
TEST(ManageRouteTest, valuesOutOfRange) {
   std::string const labelRange =
       "Lumen::MplsLabel::value < Lumen::MplsLabel::min or > Lumen::MplsLabel::luWithdraw not allowed";
   std::string const stringRange = "Zam::String::bytes > maxLength() not allowed";
   std::string const tooLong(101, 'v');
   std::pair<Command, std::string> const cases[] = {
       {{.tag = 7, .vtep = "1.1.1.1", .vni = 0x1000000, .mac = "00:1c:73:00:00:01"},
        "Lumen::Vni::value > Lumen::Vni::max not allowed"},
       {{.hop = "1.1.1.1", .tag = 7, .label = 8388609}, labelRange},
       {{.hop = "1.1.1.1", .tag = 7, .label = 0xffffffff}, labelRange},
       {{.hop = "1.1.1.1", .tag = 7, .leakToVrf = tooLong}, stringRange},
       {{.hop = "1.1.1.1", .tag = 7, .egressVrf = tooLong}, stringRange},
       {{.preference = 256}, "Routing::RoutePreference > 255 not allowed"},
       {{.prefix = "10.0.0.1/8"}, "Lumen::Prefix::address & ~mask() != 0 not allowed"},
   };
   for (auto const& [command, error] : cases) {
      auto const list = routeList();
      auto const helper = helperWithLimit(0);
      EXPECT_EQ(complaintOf<Zam::RangeError>([&, &added = command] { added.addTo(list, *helper); }), error);
      EXPECT_EQ(helper->errorMsg().bytes(), "");
      ASSERT_EQ(list->route().size(), command.tag != 0 ? 1 : 0) << error;
      if (auto const* const route = list->route(key("10.0.0.0/8")); route != nullptr) {
         EXPECT_TRUE(route->via().empty() && route->tag() == 7 && route->leakToVrf().isDefaultVrf());
      }
   }
   for (char const* const prefix : {"none", "", "10.0.0.0"}) {
      EXPECT_THROW(Command{.prefix = prefix}.addTo(routeList(), *helperWithLimit(0)), Zam::ParseError) << prefix;
   }
   auto const list = routeList();
   EXPECT_TRUE((Command{.hop = "1.1.1.1", .leakToVrf = std::string(100, 'v'), .label = 8388608}.addTo(
       list, *helperWithLimit(0))));
   EXPECT_EQ(list->route(key("10.0.0.0/8"))->via().begin()->key.mplsLabel.value(), 8388608);
}

TEST(ManageRouteDeathTest, impossibleStates) {
   auto const list = routeList();
   auto const helper = helperWithLimit(0);
   EXPECT_DEATH((Command{.type = static_cast<RouteType>(5)}.addTo(list, *helper)),
                "routeType == Routing::nexthopGroup\\(\\) \\|\\| routeType == Routing::l2NexthopGroup\\(\\), "
                "source Kiv/CliSupport");
   EXPECT_DEATH((Command{.hop = "1.1.1.1"}.addTo(list, *ipRouteCliPluginHelperFactory(nullptr))),
                "routingHardwareStatus\\(\\), source Kiv/CliSupport");
   ASSERT_TRUE(Command{.type = RouteType::l2NexthopGroup}.addTo(list, *helper));
   EXPECT_DEATH((Command{.hop = "1.1.1.1"}.addTo(list, *helper)), "r->routeType\\(\\) == routeType");
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

// Commands one after the other, of which the last may be refused, and the lines that would make what they left.
TEST(ManageRouteTest, commandsAndWhatTheyLeave) {
   for (auto const& [commands, outcome] : casesOf("managed, with room for two vias")) {
      auto const list = routeList();
      auto const helper = helperWithLimit(2);
      std::istringstream in(commands);
      bool added = true;
      for (std::string command; std::getline(in, command, ';');) {
         EXPECT_TRUE(added) << commands;
         added = commandOf(command).addTo(list, *helper);
      }
      EXPECT_EQ(helper->errorMsg().empty(), added) << commands;
      auto const left = StaticRoutesCliSaver().save(list, false, "", {}).bytes();
      EXPECT_EQ((added ? "" : helper->errorMsg().bytes() + "| ") + onOneLine(left), outcome) << commands;
   }
}

TEST(ClearIntfRoutesTest, leavesWhatHasNothingOfTheInterface) {
   auto const list = routeList();
   auto const helper = helperWithLimit(0);
   auto const add = [&](Command const& command) { ASSERT_TRUE(command.addTo(list, *helper)); };
   add({.prefix = "10.2.0.0/16", .hop = "1.1.1.1", .intf = "Ethernet1"});
   add({.prefix = "10.2.0.0/16", .hop = "1.1.1.1", .intf = "Ethernet10"});
   add({.prefix = "10.3.0.0/16", .hop = "1.1.1.1"});  // through no interface
   add({.prefix = "10.4.0.0/16", .type = RouteType::drop});
   list->routeIs(key("10.6.0.0/16"), RouteType::forward);  // has no vias from the start
   Routing::Via via;
   via.intfId = Lumen::IntfId::parse("Ethernet1");
   list->routeIs(key("10.7.0.0/16"), RouteType::forward)->viaNextHopNameIs(via, "a name is all that it has");
   list->route(key("10.4.0.0/16"))->viaNextHopNameIs(via, "left over");
   list->route(key("10.3.0.0/16"))->viaNextHopNameIs(list->route(key("10.3.0.0/16"))->via().begin()->key, "kept");

   auto const clear = [&](char const* intf) {
      ClearIntfRoutesAndViasHelper().clearIntfRoutesAndViasHelper(list, intf);
   };
   clear("");
   ASSERT_EQ(list->route().size(), 5);
   EXPECT_EQ(list->route(key("10.3.0.0/16"))->viaNextHopName().size(), 1);
   clear("Ethernet1");
   std::set<std::string> left;
   for (auto const& [at, route] : list->route()) {
      left.insert(at.prefix.stringValue());
   }
   EXPECT_EQ(left, (std::set<std::string>{"10.2.0.0/16", "10.3.0.0/16", "10.4.0.0/16", "10.6.0.0/16"}));
   EXPECT_EQ(list->route(key("10.2.0.0/16"))->via().begin()->key.intfId.name(), "Ethernet10");
   EXPECT_TRUE(list->route(key("10.4.0.0/16"))->viaNextHopName().empty());
}

}  // namespace

}  // namespace Kiv::Testing
