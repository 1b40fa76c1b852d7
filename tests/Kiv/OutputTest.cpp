#include "SorterTesting.h"

#include "Zam/Clock.h"

namespace Kiv::Testing {

namespace {

template <class Family>
class OutputTest : public ::testing::Test {
 public:
   Box<Family> box_;

   bool flag(char const* name) const { return box_.model().find(name)->text == "true"; }
};
TYPED_TEST_SUITE(OutputTest, Families);

// Of a table that is not there, no warning.
TYPED_TEST(OutputTest, warnings) {
   auto& box = this->box_;
   box.hardwareUnprogrammedIs(TypeParam::nested[0]);
   EXPECT_FALSE(this->flag("allRoutesProgrammedHardware"));
   box.inputs.unprogrammedRouteStatus = nullptr;
   EXPECT_TRUE(this->flag("allRoutesProgrammedHardware"));
   EXPECT_EQ(box.text().find("WARNING"), std::string::npos);
}

TYPED_TEST(OutputTest, routingIsDisabledWithoutConfiguration) {
   EXPECT_FALSE(this->flag("routingDisabled"));
   this->box_.config->routingIs(false);
   EXPECT_TRUE(this->flag("routingDisabled"));
   this->box_.inputs.routingConfig = nullptr;
   EXPECT_TRUE(this->flag("routingDisabled"));
}

TYPED_TEST(OutputTest, timingsOnlyWithARequestTime) {
   EXPECT_EQ(this->box_.text().find("Time taken"), std::string::npos);
   EXPECT_EQ(this->box_.model().find("quantify"), nullptr);
   this->box_.inputs.startTime = Zam::currentTime();
   auto const text = this->box_.text();
   auto const printed = text.find("Time taken for the routes to be printed: 0.");
   EXPECT_NE(printed, std::string::npos);
   EXPECT_LT(printed, text.find("Time taken to create the routeSorter: 0."));
   auto const model = this->box_.model();
   EXPECT_GE(std::stod(model.find("quantify")->text), std::stod(model.find("rsTime")->text));
}

// What the route cache adds is counted, too: of this VRF and family, and only where the FIB has nothing.
TEST(Output6Test, tableHeaderCountsTheRouteCache) {
   Box<V6> box;
   box.routeIs("2001:db8::/32", V6::ospf);
   box.routeIs("2001:db8:1::/48", V6::RouteType::martian);
   auto const cache = Zam::makePtr<Routing::Rib::RouteConfig>();
   for (auto const& [prefix, vrfId] : {std::pair("2001:db8::/32", box.vrfId),
                                       {"2001:db8:5::/48", box.vrfId},
                                       {"2001:db8:6::/48", 8U},
                                       {"10.0.0.0/8", box.vrfId}}) {
      cache->routeIs({{}, Lumen::IpGenPrefix::parse(prefix), vrfId}, {});
   }
   box.inputs.routeCacheConfig = cache;
   EXPECT_TRUE(box.text().starts_with("Displaying 2 of 3 IPv6 routing table entries\nCodes:"));
}

TEST(Output4Test, isisSwitchReplacesTheWholeLegend) {
   Box<V4> box;
   box.inputs.familySwitch = true;
   EXPECT_EQ(box.text(),
             "Codes: I L1 - IS-IS level 1, I L2 - IS-IS level 2\n\nGateway of last resort is not set\n\n\n");
}

// When the gateway of last resort is left out.
TYPED_TEST(OutputTest, gatewayOfLastResort) {
   auto& box = this->box_;
   auto const expect = [&box](std::string const& text, std::string const& state) {
      EXPECT_EQ(box.textAfterLegend(), text);
      EXPECT_EQ(box.model().find("defaultRouteState")->text, state);
   };
   auto const filters = routeFilterCollFactory(false);
   filters->filterCollIs(routeFilterIntfFactory(nullptr));
   box.inputs.routeFilterColl = filters;
   expect("\n", "notSet");
   box.inputs.routeFilterColl = nullptr;
   auto const routeList = Zam::makePtr<Routing::RouteList>();
   routeList->routeIs({{}, Lumen::IpGenPrefix(box.prefix(TypeParam::everything)), 1}, Routing::RouteType::forward);
   box.inputs.routeList = routeList;
   expect("Gateway of last resort is not reachable\n\n\n", "notReachable");
   box.routeIs(TypeParam::everything, TypeParam::RouteType::staticConfig);
   box.inputs.protocol = "B";
   expect("\n", "notReachable");
   box.inputs.protocol = "";
   box.routeIs(TypeParam::nested[0], TypeParam::ospf);
   box.inputs.prefix = box.prefix(TypeParam::nested[0]);
   EXPECT_EQ(box.textAfterLegend().find("Gateway"), std::string::npos) << "another prefix was asked for";
}

// Of groups with one id the last by name is shown, wherever they are in the table; damage to it costs the names.
TYPED_TEST(OutputTest, namesOfNexthopGroups) {
   auto& box = this->box_;
   auto via = box.via("", "");
   via.intfId = Lumen::IntfId::fromNexthopGroup(8);
   box.routeIs(TypeParam::nested[0], TypeParam::RouteType::nexthopGroup, box.fecIs(1, {via}));
   auto const expect = [&box](std::string const& name) {
      EXPECT_NE(box.text().find("via " + name + ", Nexthop Group ID 8\n"), std::string::npos) << box.text();
   };
   expect("NexthopGroupUnknown");
   for (auto const* const name : {"m", "z", "a"}) {
      box.nexthopGroupIs(name, 8);
   }
   expect("z");
   box.damage("groups");
   expect("NexthopGroupUnknown");
   box.inputs.nexthopGroupEntryStatus = nullptr;
   expect("NexthopGroupUnknown");
}

// Vias that resolve through each other, four ways each: without a bound, 4 to the power of 16 of them.
TYPED_TEST(OutputTest, hierarchicalLoopsEnd) {
   auto& box = this->box_;
   auto const fourWays = [&](U64 id) {
      std::vector<Vault::Fib::Via> ways(4);
      for (U32 i = 0; i < 4; ++i) {
         ways[i].intfId = Lumen::IntfId::fromFecId(box.fecIdOf(id).value());
         ways[i].label = Lumen::MplsLabel(16 + i);
      }
      return ways;
   };
   box.routeIs(TypeParam::nested[0], TypeParam::ospf, box.fecIs(1, fourWays(2)));
   box.fecIs(2, fourWays(1));
   EXPECT_LT(std::ranges::count(box.text(), '\n'), 66'000);
}

TEST(HostOutput4Test, hostRoutes) {
   using T = V4::RouteType;
   Box<V4> box;
   box.inputs.hostRoutes = true;
   box.routeIs("10.0.0.0/32", T::receiveBroadcast, box.fecIs(1, {}));
   box.routeIs("10.0.0.1/32", T::receive, box.fecIs(1, {}));
   box.routeIs("10.0.0.2/32", T::attached, box.fecIs(2, {box.via("10.0.0.2", "Ethernet1")}));
   box.routeIs("10.0.0.3/32", T::staticConfig,
               box.fecIs(3, {box.via("10.0.0.2", "Ethernet1"), box.via("10.0.0.9", "Ethernet2")}));
   box.routeIs("10.0.0.4/32", T::connected, box.fecIs(4, {box.via("", "Ethernet1")}));
   box.routeIs("10.0.0.5/32", T::drop, box.fecIs(5, {}));
   auto tunnel = box.via("", "Ethernet1");
   tunnel.tunnelId = 0x31;
   auto vxlan = box.via("10.0.0.8", "Vxlan1");
   vxlan.tunnelId = Tunnel::tunnelIdOf(Tunnel::TunnelType::evpnVxlan, 1);
   auto const vxlanTunnels = Zam::makePtr<Tunnel::TunnelTable::EvpnVxlanTunnelTable>();
   vxlanTunnels->entryIs(vxlan.tunnelId, {{}, Lumen::IpGenAddr::parse("10.0.0.8"), Lumen::Vni(5), {}, {}});
   box.inputs.evpnVxlanTunnelTable = vxlanTunnels;
   box.routeIs("10.0.0.6/32", T::staticConfig, box.fecIs(6, {tunnel, vxlan}));
   box.routeIs("10.0.0.0/8", T::staticConfig);
   box.hardwareUnprogrammedIs("10.0.0.3/32");
   EXPECT_EQ(box.text(),
             "======================================================\n"
             "WARNING: Some of the routes are not programmed in     \n"
             "hardware, and they are marked with '*'.               \n"
             "======================================================\n"
             "R - receive, B - broadcast, F - FIB, A - attached, D - directed broadcast\n\n"
             " B  10.0.0.0 to cpu\n"
             " R  10.0.0.1 to cpu\n"
             " A  10.0.0.2 on Ethernet1\n"
             "*F  10.0.0.3 via 10.0.0.2 on Ethernet1\n"
             "             via 10.0.0.9 on Ethernet2\n"
             " R  10.0.0.4 to cpu on Ethernet1\n"
             " F  10.0.0.5\n"
             " F  10.0.0.6 via 10.0.0.8\n"
             "             on DynamicTunnel(0x31)\n"
             "\n");
   EXPECT_NE(box.output(2).find(R"("10.0.0.4/32":{"hardwareProgrammed":true,"routeType":"FIB","vias":[{"toCpu":true,)"
                                R"("interface":"Ethernet1"}]})"),
             std::string::npos);
}

// A table whose index is junk costs what it holds, and nothing else.
TYPED_TEST(OutputTest, damagedTablesCostTheirOwnContentOnly) {
   auto& box = this->box_;
   box.routeIs(TypeParam::nested[0], TypeParam::ospf);
   box.hardwareUnprogrammedIs(TypeParam::nested[0]);
   box.kernelUnprogrammedIs(TypeParam::nested[0]);
   box.damage("hardware");
   box.damage("kernel");
   box.damage("fecs");
   auto const model = box.model();
   ASSERT_EQ(model.find("routes")->members.size(), 1U);
   auto const& route = model.find("routes")->members.front().value;
   EXPECT_EQ(route.find("hardwareProgrammed")->text, "true");
   EXPECT_TRUE(route.find("vias")->members.empty());
}

// What streams out in pieces is what would have been written at once.
TYPED_TEST(OutputTest, aLargeTableStreams) {
   auto& box = this->box_;
   box.manyRoutesAre(4000);
   auto const model = box.model();
   EXPECT_EQ(model.find("routes")->members.size(), 4000U);
   auto const text = box.text();
   EXPECT_GT(text.size(), 2 * cliprint::globalBufsize);
   EXPECT_EQ(static_cast<std::size_t>(std::count(text.begin(), text.end(), '[')), 4000U);
}

}  // namespace

}  // namespace Kiv::Testing
