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

}  // namespace

}  // namespace Kiv::Testing
