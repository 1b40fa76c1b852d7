#include "ConfigTesting.h"

namespace Kiv::Testing {

namespace {

using Lumen::IpGenAddr;
using Routing::Via;

std::string saved(Zam::Ptr<Routing::RouteList const> const& list, bool saveAll = false,
                  RoutingConsts const& defaults = {}) {
   return StaticRoutesCliSaver().save(list, saveAll, "ip route ", defaults).bytes();
}

TEST(StaticRoutesCliSaverTest, routesOfOneLine) {
   for (auto const& [text, lines] : casesOf("saved: type, preference, tag, name, metric")) {
      auto const parts = partsOf(text);
      auto const list = routeList();
      auto const route = routeOf(list, parts);
      route->nexthopGroupMetricIs(static_cast<U32>(std::stoul(parts[4])));
      EXPECT_EQ(onOneLine(saved(list) + saved(list, true) + saved(list, false, {{}, 2, 9, "n", 5})), lines) << text;
      route->nonPersistentIs(true);
      EXPECT_EQ(saved(list, true), "");
   }
}

// A via of each kind with all that its line may have, and with nothing of it but what makes it one.
TEST(StaticRoutesCliSaverTest, thePiecesOfAViasLine) {
   auto const list = routeList();
   auto const helper = helperWithLimit(0);
   for (Command const& command : {
            Command{.prefix = "10.1.0.0/16",
           .hop = "1.1.1.1",
           .intf = "Ethernet1",
           .preference = 2,
           .tag = 7,
           .metric = 3,
           .leakToVrf = "blue",
           .label = 16,
           .ribBypass = true,
           .validation = true,
           .name = "n",
           .bfd = true},
            Command{.prefix = "10.2.0.0/16", .hop = "1.1.1.1", .egressVrf = "red", .label = 16},
            Command{.prefix = "10.3.0.0/16", .intf = "Ethernet1", .label = 16, .bfd = true},
            Command{.prefix = "10.4.0.0/16",
            .intf = "Vxlan1",
            .tag = 7,
            .vtep = "9.9.9.9",
            .vni = 5,
            .mac = "00:1c:73:00:00:01",
            .localIntf = "Loopback0",
            .ribBypass = true,
            .validation = true},
            Command{.prefix = "10.5.0.0/16", .vtep = "9.9.9.9", .vni = 5, .mac = "00:1c:73:00:00:01"},
        }) {
      ASSERT_TRUE(command.addTo(list, *helper)) << helper->errorMsg().bytes();
   }
   std::string lines;
   for (auto const& [prefix, tail] : casesOf("saved vias")) {
      lines.append("ip route ").append(prefix).append(" ").append(tail).append("\n");
   }
   EXPECT_EQ(saved(list), lines);
}

TEST(StaticRoutesCliSaverTest, linesStandInTheOrderOfKeysAndVias) {
   auto const list = routeList();
   for (char const* const prefix :
        {"10.0.0.0/16", "9.255.0.0/16", "10.0.0.0/8", "0.0.0.0/0", "192.168.1.0/24", "fd00:0:0:1:2::/80",
         "fd00:0:0:1:3::/80", "fd00:0:0:1:1::/96", "fd00:0:0:1:1::/80"}) {
      for (U8 const preference : {U8{200}, U8{3}, U8{1}}) {
         list->routeIs(key(prefix, preference), RouteType::drop);
      }
   }
   auto const route = list->routeIs(key("10.0.0.0/12", 1), RouteType::forward);
   for (char const* const intf : {"Ethernet10", "Ethernet2", ""}) {
      route->viaIs(through("10.0.0.2", intf), 0);
      route->viaIs(through("9.9.9.9", intf), 0);
   }
   EXPECT_EQ(onOneLine(saved(list)), casesOf("saved, in order").front().second);
   EXPECT_EQ(saved(routeList()), "");
}

TEST(StaticRoutesCliSaverTest, zeroNextHopIsOfTheRoutesFamily) {
   auto const list = routeList();
   Via via = through("");
   via.egressVrf = "red";
   list->routeIs(key("2001:db8::/32"), RouteType::forward)->viaIs(via, 0);
   EXPECT_EQ(saved(list), "ip route 2001:db8::/32 egress-vrf red ::\n");
   via.hop = IpGenAddr::parse("0.0.0.0");
   list->routeIs(key("2001:db8::/32"), RouteType::forward)->viaIs(via, 0);
   EXPECT_EQ(saved(list), "ip route 2001:db8::/32 egress-vrf red 0.0.0.0\n");  // as it is configured
   list->routeIs(key("2001:db8::/32"), RouteType::forward)->viaIs(through("::", "Vlan1"), 0);
   EXPECT_EQ(saved(list), "ip route 2001:db8::/32 Vlan1\n");
}

TEST(StaticRoutesCliSaverTest, aSecondListIsAddedToTheFirst) {
   auto const list = routeList();
   list->routeIs(key("10.0.0.0/8"), RouteType::drop);
   list->routeIs(key("11.0.0.0/8"), RouteType::drop);
   StaticRoutesCliSaver saver;
   saver.save(list, false, "", {});
   list->routeDel(key("11.0.0.0/8"));
   list->routeIs(key("10.0.0.0/8"), RouteType::routeCacheConnected);
   list->routeIs(key("9.0.0.0/8"), RouteType::drop);
   EXPECT_EQ(saver.save(list, false, "", {}).bytes(), "9.0.0.0/8 Null0\n10.0.0.0/8 cached\n11.0.0.0/8 Null0\n");
}

TEST(StaticRoutesCliSaverDeathTest, aViaHasANextHopOrAVtep) {
   auto const list = routeList();
   Via via = through("1.1.1.1");
   via.vtepAddr = IpGenAddr::parse("9.9.9.9");
   list->routeIs(key("10.0.0.0/8"), RouteType::forward)->viaIs(via, 0);
   EXPECT_DEATH(saved(list), "!via.vtepAddr\\(\\), source Kiv/CliSupport");
}

}  // namespace

}  // namespace Kiv::Testing
