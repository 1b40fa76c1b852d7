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

// The rules once more, on texts: what the configuration is after random commands, and what each of them answered.
class Model {
 public:
   explicit Model(std::size_t maxVias) : maxVias_(maxVias) {}

   struct Via {
      U32 metric;
      std::string name;
      bool bfd;
      auto operator<=>(Via const&) const = default;
   };
   struct Route {
      RouteType type{};
      U32 tag = 0;
      std::string leak = "default", dropName, group;
      U32 groupMetric = 0;
      bool bypass = false;
      std::map<std::string, Via> vias;
      auto operator<=>(Route const&) const = default;
   };
   using Routes = std::map<std::pair<std::string, U32>, Route>;

   // The refusal.
   std::string add(Command const& c) {
      auto const found = routes.find({c.prefix, c.preference});
      if (found != routes.end()) {
         auto const other = found->second.type;
         auto const differs = [&](RouteType type) { return (other == type) != (c.type == type); };
         if (differs(RouteType::nexthopGroup)) {
            return "Route " + c.prefix + " already exists, cannot ECMP with nexthop group and non-nexthop group routes";
         }
         if (differs(RouteType::drop)) {
            return "Cannot ECMP to Null0 interface.";
         }
         if (differs(RouteType::routeCacheConnected)) {
            return "Cannot ECMP to Route Cache.";
         }
      }
      auto& route = found != routes.end() ? found->second : routes[{c.prefix, c.preference}];
      route.type = found != routes.end() ? route.type : c.type;
      route.tag = c.tag;
      route.leak = c.leakToVrf.empty() ? route.leak : c.leakToVrf;
      switch (c.type) {
         case RouteType::forward:
            return addVia(route, c);
         case RouteType::drop:
            route.dropName = c.name;
            return "";
         case RouteType::nexthopGroup:
         case RouteType::l2NexthopGroup:
            route.group = c.group;
            route.groupMetric = c.metric;
            return "";
         case RouteType::routeCacheConnected:
            return "";
      }
      return "";
   }

   void clear(std::string const& intf) {
      for (auto at = routes.begin(); at != routes.end();) {
         auto& vias = at->second.vias;
         auto const removed =
             std::erase_if(vias, [&](auto const& via) { return via.first.find("|" + intf + "|") < via.first.size(); });
         at = removed != 0 && vias.empty() ? routes.erase(at) : std::next(at);
      }
   }

   Routes routes;

 private:
   std::string addVia(Route& route, Command const& c) {
      auto const text = [&](bool validation) {
         bool const evpn = !c.vtep.empty();
         return c.hop + "|" + c.intf + "|" + std::to_string(c.label.value_or(1048576)) + "|" +
                (c.intf.empty() && !c.egressVrf.empty() && c.egressVrf != c.vrf ? c.egressVrf : "default") + "|" +
                c.vtep + "|" + std::to_string(evpn ? c.vni : 0) + "|" + (evpn ? *c.mac : "00:00:00:00:00:00") + "|" +
                (evpn ? c.localIntf : "") + "|" + (evpn && validation ? "v" : "");
      };
      if (!c.vtep.empty()) {
         if (c.mac == "00:00:00:00:00:00") {
            return "Only non zero router-mac-address can be configured ";
         }
         if (!c.mac || c.mac->empty() || c.vni == 0) {
            return "Static EVPN routes must specify VNI and router-mac-address ";
         }
         route.bypass = c.ribBypass;
      }
      if (maxVias_ != 0 && route.vias.size() == maxVias_ && !route.vias.contains(text(c.validation))) {
         return "A maximum of " + std::to_string(maxVias_) + " routes are allowed with the same prefix and preference";
      }
      if (!c.vtep.empty()) {
         route.vias.erase(text(!c.validation));
      }
      route.vias[text(c.validation)] = {c.metric, c.name, c.bfd};
      return "";
   }

   std::size_t maxVias_;
};

Model::Routes routesOf(Routing::RouteList const& list) {
   Model::Routes routes;
   for (auto const& [at, route] : list.route()) {
      auto& model = routes[{at.prefix.stringValue(), at.preference}];
      model = {route->routeType(),
               route->tag(),
               route->leakToVrf().bytes(),
               route->dropNextHopName().bytes(),
               route->nexthopGroupName().bytes(),
               route->nexthopGroupMetric(),
               route->ribBypass(),
               {}};
      for (auto const& [via, metric] : route->via()) {
         auto const* const name = route->viaNextHopName().find(via);
         model.vias[textOf(via)] = {metric, name != nullptr ? name->bytes() : "", route->bfdTracked().contains(via)};
      }
   }
   return routes;
}

class Random {
 public:
   template <class T>
   T among(std::initializer_list<T> values) {
      return values.begin()[engine_() % values.size()];
   }
   bool oneIn(unsigned n) { return engine_() % n == 0; }

   // Of few prefixes and vias, so that they meet.
   Command command() {
      Command c{.prefix = among<std::string>({"10.0.0.0/8", "10.0.0.0/16", "2001:db8::/32"}),
                .type = oneIn(3) ? static_cast<RouteType>(engine_() % 5) : RouteType::forward,
                .intf = among<std::string>({"", "Ethernet1", "Vlan10"}),
                .preference = among<U16>({1, 1, 255}),
                .tag = among<U32>({0, 1, 2}),
                .metric = among<U32>({0, 1, 2}),
                .vrf = among<std::string>({"default", "red"}),
                .leakToVrf = among<std::string>({"", "", "blue"}),
                .egressVrf = among<std::string>({"", "red", "default"}),
                .ribBypass = oneIn(2),
                .validation = oneIn(2),
                .name = among<std::string>({"", "n", "x"}),
                .bfd = oneIn(2),
                .group = among<std::string>({"", "g"})};
      if (oneIn(2)) {
         c.hop = among<std::string>({"", "1.1.1.1", "fe80::1"});
         c.label = oneIn(3) ? std::optional<U32>(16) : std::nullopt;
      } else {
         c.vtep = "9.9.9.9";
         c.vni = among<U32>({0, 5, 5, 5});
         c.mac =
             among<std::optional<std::string>>({{}, "", "00:00:00:00:00:00", "00:1c:73:00:00:01", "00:1c:73:00:00:01"});
         c.localIntf = among<std::string>({"", "Loopback0"});
      }
      return c;
   }

 private:
   std::minstd_rand engine_{20};
};

TEST(ManageRouteTest, agreesWithTheRulesOverRandomCommands) {
   Random random;
   std::set<std::string> seen;
   for (U32 const limit : {0, 1, 3}) {
      Model model(limit);
      auto const list = routeList();
      for (int i = 0; i < 4000; ++i) {
         auto const command = random.command();
         auto const there = model.routes.find({command.prefix, command.preference});
         if (there != model.routes.end() && there->second.type == RouteType::l2NexthopGroup &&
             command.type == RouteType::forward) {
            continue;  // a programming error
         }
         auto const refusal = model.add(command);
         auto const helper = helperWithLimit(limit);
         EXPECT_EQ(command.addTo(list, *helper), refusal.empty());
         ASSERT_EQ(helper->errorMsg().bytes(), refusal) << i;
         seen.insert(refusal);
         if (random.oneIn(40)) {
            auto const intf = random.among<std::string>({"Ethernet1", "Vlan10"});
            model.clear(intf);
            ClearIntfRoutesAndViasHelper().clearIntfRoutesAndViasHelper(list, intf);
         }
         if (random.oneIn(100)) {
            auto const at = key(command.prefix, static_cast<U8>(command.preference));
            model.routes.erase({command.prefix, command.preference});
            list->routeDel(at);
         }
         ASSERT_EQ(routesOf(*list) == model.routes, true) << i;
      }
   }
   EXPECT_EQ(seen.size(), 5 + 5);  // every refusal came up
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
