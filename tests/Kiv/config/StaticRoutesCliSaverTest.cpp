#include "ConfigTesting.h"
#include "Zam/ActivityLock.h"

namespace Kiv::Testing {

namespace {

using Lumen::IntfId;
using Lumen::IpGenAddr;
using Routing::Route;
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

// Each piece of a via's line, in their order; every combination of them is a line with exactly those.
struct Piece {
   std::string text;
   std::function<void(Via&)> onVia = [](Via&) {};
   std::function<void(Route&, Via const&)> onRoute = [](Route&, Via const&) {};
};

TEST(StaticRoutesCliSaverTest, everyCombinationOfTheViasPieces) {
   enum { egress, intf, hop, label, bfd, vtep, local, bypass, validation, tag, name, metric, leak, pieces };
   Piece const all[pieces] = {
       {" egress-vrf red", [](Via& via) { via.egressVrf = "red"; }},
       {" Ethernet1", [](Via& via) { via.intfId = IntfId::parse("Ethernet1"); }},
       {" 1.1.1.1", [](Via& via) { via.hop = IpGenAddr::parse("1.1.1.1"); }},
       {" label 16", [](Via& via) { via.mplsLabel = Lumen::MplsLabel(16); }},
       {" track bfd", {}, [](Route& route, Via const& via) { route.bfdTrackedIs(via); }},
       {" vtep 9.9.9.9 vni 5 router-mac-address 00:1c:73:00:00:01",
        [](Via& via) {
           via.vtepAddr = IpGenAddr::parse("9.9.9.9");
           via.vni = Lumen::Vni(5);
           via.routerMac = Lumen::EthAddr::parse("00:1c:73:00:00:01");
        }},
       {" local-interface Loopback0", [](Via& via) { via.localIntf = IntfId::parse("Loopback0"); }},
       {" rib-bypass", {}, [](Route& route, Via const&) { route.ribBypassIs(true); }},
       {" source-vtep-validation", [](Via& via) { via.vtepSipValidation = true; }},
       {" tag 7", {}, [](Route& route, Via const&) { route.tagIs(7); }},
       {" name n", {}, [](Route& route, Via const& via) { route.viaNextHopNameIs(via, "n"); }},
       {" metric 3", {}, [](Route& route, Via const& via) { route.viaIs(via, 3); }},
       {" leak vrf blue", {}, [](Route& route, Via const&) { route.leakToVrfIs("blue"); }},
   };
   for (unsigned set = 0; set < 1U << pieces; ++set) {
      auto const has = [set](int piece) { return (set >> piece & 1U) != 0; };
      bool const hasHop = has(hop) || has(egress);
      if (hasHop && has(vtep)) {
         continue;  // a programming error
      }
      Via via;
      std::string expected = "ip route 10.0.0.0/8";
      for (int piece = 0; piece < pieces; ++piece) {
         if (has(piece) && all[piece].onVia) {
            all[piece].onVia(via);
         }
         bool const needsHop = piece == label;
         bool const needsVtep = piece == local || piece == bypass || piece == validation;
         if (has(piece) && (!needsHop || hasHop) && (!needsVtep || has(vtep))) {
            expected += all[piece].text;
         } else if (piece == hop && has(egress)) {
            expected += " 0.0.0.0";
         }
      }
      auto const list = routeList();
      auto const route = list->routeIs(key("10.0.0.0/8"), RouteType::forward);
      route->viaIs(via, 0);
      for (int piece = 0; piece < pieces; ++piece) {
         if (has(piece) && all[piece].onRoute) {
            all[piece].onRoute(*route, via);
         }
      }
      ASSERT_EQ(saved(list), expected + "\n");
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

TEST(StaticRoutesCliSaverDeathTest, aViaHasANextHopOrAVtep) {
   auto const list = routeList();
   Via via = through("1.1.1.1");
   via.vtepAddr = IpGenAddr::parse("9.9.9.9");
   list->routeIs(key("10.0.0.0/8"), RouteType::forward)->viaIs(via, 0);
   EXPECT_DEATH(saved(list), "!via.vtepAddr\\(\\), source Kiv/CliSupport");
}

// Whoever gets the lock while a large list is saved may change the list: what is written is what it held at first.
TEST(StaticRoutesCliSaverTest, othersChangeTheListMeanwhile) {
   constexpr U32 count = 20000;
   auto const list = routeList();
   auto const keyOf = [](U32 i) {
      return Routing::RouteKey{{}, Lumen::Prefix(Lumen::IpAddr(0x0a000000 + i * 256), 24), 1};
   };
   for (U32 i = 0; i < count; ++i) {
      list->routeIs(keyOf(i), RouteType::forward)->viaIs(through("1.1.1.1"), 0);
   }
   auto const before = saved(list);
   EXPECT_EQ(std::ranges::count(before, '\n'), count);
   std::atomic<bool> saving = true;
   std::atomic<U32> turns = 0;
   std::string during;
   U32 turnsWhileSaving = 0;
   std::thread other;
   {
      Zam::ScopedActivity const activity;
      other = std::thread([&] {
         for (U32 i = 0; saving; ++turns) {
            Zam::ActivityLock::lock();
            for (U32 const end = i + 500; i < end; ++i) {
               list->routeDel(keyOf(i % count));
               list->routeIs(keyOf(count + i), RouteType::drop);
            }
            Zam::ActivityLock::unlock();
            std::this_thread::sleep_for(std::chrono::microseconds(100));  // a mutex is not fair
         }
      });
      during = saved(list);
      turnsWhileSaving = turns;
      EXPECT_TRUE(Zam::ActivityLock::held());
   }
   saving = false;
   other.join();
   EXPECT_EQ(during == before, true);
   EXPECT_GT(turnsWhileSaving, 0);
}

}  // namespace

}  // namespace Kiv::Testing
