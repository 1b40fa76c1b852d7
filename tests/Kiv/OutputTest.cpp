#include "SorterTesting.h"

#include "Zam/Clock.h"

namespace Kiv::Testing {

namespace {

std::string const separator = "======================================================\n";
std::string const hardwareWarning =
    "WARNING: Some of the routes are not programmed in     \n"
    "hardware, and they are marked with '*'.               \n";
std::string const kernelWarning =
    "WARNING: Some of the routes are not programmed in     \n"
    "kernel, and they are marked with '%'.                 \n";

template <class Family>
class OutputTest : public ::testing::Test {
 public:
   Box<Family> box_;

   std::string beforeLegend() const {
      auto const text = box_.text();
      return text.substr(0, text.find("Codes:"));
   }
   bool flag(char const* name) const { return box_.model().find(name)->text == "true"; }
};
TYPED_TEST_SUITE(OutputTest, Families);

// The warnings have one box, which a kernel warning alone does not get; the flags of the model say the same.
TYPED_TEST(OutputTest, warnings) {
   auto& box = this->box_;
   box.inputs.prefix = box.prefix(TypeParam::everything);
   box.inputs.longerPrefixes = true;
   std::string const header = TypeParam::hasTableHeader ? "Routing entry for ::\n" : "";
   EXPECT_EQ(this->beforeLegend(), header);
   EXPECT_TRUE(this->flag("allRoutesProgrammedHardware") && this->flag("allRoutesProgrammedKernel"));
   box.kernelUnprogrammedIs(TypeParam::nested[0]);
   EXPECT_EQ(this->beforeLegend(), header + kernelWarning);
   EXPECT_TRUE(this->flag("allRoutesProgrammedHardware") && !this->flag("allRoutesProgrammedKernel"));
   box.hardwareUnprogrammedIs(TypeParam::nested[0]);
   EXPECT_EQ(this->beforeLegend(), header + separator + hardwareWarning + kernelWarning + separator);
   EXPECT_FALSE(this->flag("allRoutesProgrammedHardware"));
   box.inputs.unprogrammedRouteStatus = nullptr;
   EXPECT_EQ(this->beforeLegend(), header + kernelWarning);
   EXPECT_TRUE(this->flag("allRoutesProgrammedHardware"));
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

TEST(Output6Test, tableHeaderSaysWhatIsShown) {
   Box<V6> box;
   box.routeIs("2001:db8::/32", V6::ospf);
   box.routeIs("2001:db8:1::/48", V6::RouteType::martian);
   EXPECT_EQ(box.text().rfind("Displaying 1 of 2 IPv6 routing table entries\nCodes:", 0), 0U);
   box.inputs.prefix = box.prefix("2001:db8::1/128");
   EXPECT_EQ(box.text(true).rfind("\nVRF: default\nRouting entry for 2001:db8::1\nCodes:", 0), 0U);
   box.inputs.prefixHasMask = true;
   EXPECT_EQ(box.text().rfind("Routing entry for 2001:db8::1/128\n", 0), 0U);
   auto const cache = Zam::makePtr<Routing::Rib::RouteConfig>();
   auto const entryIs = [&](char const* prefix, U32 vrfId) {
      Routing::Rib::RouteConfigKey key;
      key.prefix = Lumen::IpGenPrefix::parse(prefix);
      key.vrfId = vrfId;
      cache->routeIs(key, {});
   };
   entryIs("2001:db8::/32", box.vrfId);    // in the FIB as well
   entryIs("2001:db8:5::/48", box.vrfId);  // counts
   entryIs("2001:db8:6::/48", 8);          // of another VRF
   entryIs("10.0.0.0/8", box.vrfId);       // of the other family
   box.inputs.routeCacheConfig = cache;
   box.inputs.prefix = {};
   EXPECT_EQ(box.text().rfind("Displaying 2 of 3 IPv6", 0), 0U);
}

TEST(Output4Test, isisSwitchReplacesTheWholeLegend) {
   Box<V4> box;
   box.inputs.familySwitch = true;
   EXPECT_EQ(box.text(),
             "Codes: I L1 - IS-IS level 1, I L2 - IS-IS level 2\n\nGateway of last resort is not set\n\n\n");
}

// Every state of the gateway of last resort, and when its section is left out.
TYPED_TEST(OutputTest, gatewayOfLastResort) {
   auto& box = this->box_;
   auto const state = [&] { return box.model().find("defaultRouteState")->text; };
   std::string const notSet = "Gateway of last resort is not set\n\n";
   EXPECT_EQ(box.textAfterLegend(), notSet + "\n");
   EXPECT_EQ(state(), "notSet");

   auto const filters = routeFilterCollFactory(false);
   struct PassAll : RouteFilterBase {
      std::string_view fwkType() const noexcept override { return "PassAll"; }
      bool filter(Zam::Ptr<CachedFec> const&, bool) const override { return false; }
   };
   filters->filterCollIs(Zam::makePtr<PassAll>());
   box.inputs.routeFilterColl = filters;
   EXPECT_EQ(box.textAfterLegend(), "\n");
   box.inputs.routeFilterColl = nullptr;

   auto const routeList = Zam::makePtr<Routing::RouteList>();
   Routing::RouteKey key;
   key.prefix = Lumen::IpGenPrefix(box.prefix(TypeParam::everything));
   routeList->routeIs(key, Routing::RouteType::forward);
   box.inputs.routeList = routeList;
   EXPECT_EQ(box.textAfterLegend(), "Gateway of last resort is not reachable\n\n\n");
   EXPECT_EQ(state(), "notReachable");

   box.routeIs(TypeParam::everything, TypeParam::RouteType::staticConfig);
   EXPECT_EQ(state(), "reachable");
   auto const text = box.textAfterLegend();
   EXPECT_EQ(text.rfind("Gateway of last resort:\n S        " + std::string(TypeParam::everything), 0), 0U) << text;
   EXPECT_EQ(text.find(TypeParam::everything), text.rfind(TypeParam::everything)) << "printed twice";
   auto const model = box.model();
   EXPECT_EQ(model.find("routes")->members.size(), 1U);

   box.inputs.protocol = "B";
   EXPECT_EQ(box.textAfterLegend(), "\n") << "its protocol was not asked for";
   EXPECT_EQ(state(), "notReachable");
   box.inputs.protocol = "";
   box.routeIs(TypeParam::nested[0], TypeParam::ospf);
   box.inputs.prefix = box.prefix(TypeParam::nested[0]);
   EXPECT_EQ(box.textAfterLegend().find("Gateway"), std::string::npos) << "another prefix was asked for";
}

// Route lines, character by character: those that the demo does not show.
TEST(Output4Test, routeLines) {
   using Via = Vault::Fib::Via;
   using T = V4::RouteType;
   Box<V4> box;
   auto weighted = [](Via via, U16 weight) {
      via.weight = weight;
      return via;
   };
   auto const here = box.via("192.0.2.1", "Ethernet1");
   auto const inRed = box.via("192.0.2.1", "Ethernet4");
   box.interfaceIs("Ethernet4", "192.0.2.1/24", false, "red");
   box.routeIs("10.2.0.0/16", T::eBgp,
               box.fecIs(3, {box.via("192.0.2.9", "Ethernet10"), box.via("192.0.2.10", "Ethernet2"),
                             box.via("192.0.2.9", "Ethernet2")}),
               200, 0);
   box.routeIs("10.3.0.0/16", T::staticConfig, box.fecIs(4, {weighted(here, 9), weighted(inRed, 10)}), 1, 0);
   auto const twoWays = box.fecIs(6, {here, box.via("192.0.2.2", "Ethernet1")});
   box.leakedRouteIs(box.routeIs("10.5.0.0/16", T::isisLevel2, twoWays, 115, 5), 8);
   box.leakedRouteIs(box.routeIs("10.6.0.0/16", T::connected, box.fecIs(7, {box.via("", "Ethernet1")}), 0, 0), 8);
   box.hardwareUnprogrammedIs("10.2.0.0/16");
   box.kernelUnprogrammedIs("10.2.0.0/16");
   box.kernelUnprogrammedIs("10.5.0.0/16");
   auto const text = box.text();
   EXPECT_EQ(text.substr(text.find("*B E%")),
             "*B E%     10.2.0.0/16 [200/0] via 192.0.2.9, Ethernet2\n"
             "                              via 192.0.2.10, Ethernet2\n"
             "                              via 192.0.2.9, Ethernet10\n"
             " S        10.3.0.0/16 [1/0] via 192.0.2.1, Ethernet1, weight 9/19\n"
             "                            via 192.0.2.1, Ethernet4 (egress VRF red), weight 10/19\n"
             " I L2 L%  10.5.0.0/16 [115/5] (source VRF red) via 192.0.2.1, Ethernet1\n"
             "                                               via 192.0.2.2, Ethernet1\n"
             " C L      10.6.0.0/16 is directly connected (source VRF red), Ethernet1\n"
             "\n");
   auto const json = box.output(2);
   EXPECT_EQ(
       json.substr(json.find(R"("vias":[{"nexthopAddr":"192.0.2.1")")),
       R"("vias":[{"nexthopAddr":"192.0.2.1","interface":"Ethernet1","viaWeight":"9/19"},)"
       R"({"nexthopAddr":"192.0.2.1","interface":"Ethernet4","egressVrf":"red","viaWeight":"10/19"}],"directlyConnected":false},)"
       R"("10.5.0.0/16":{"hardwareProgrammed":true,"routeType":"ISISLevel2","routeLeaked":true,"kernelProgrammed":false,)"
       R"("routeAction":"forward","preference":115,"metric":5,"srcVrf":"red","vias":[)"
       R"({"nexthopAddr":"192.0.2.1","interface":"Ethernet1"},{"nexthopAddr":"192.0.2.2","interface":"Ethernet1"}],"directlyConnected":false},)"
       R"("10.6.0.0/16":{"hardwareProgrammed":true,"routeType":"connected","routeLeaked":true,"kernelProgrammed":true,)"
       R"("routeAction":"forward","srcVrf":"red","vias":[{"interface":"Ethernet1"}],"directlyConnected":true}}})"
       "\n");
}

TYPED_TEST(OutputTest, nexthopGroupsByNameAndId) {
   auto& box = this->box_;
   auto const groups = Zam::makePtr<NexthopGroup::EntryStatus>();
   groups->nexthopGroupIdIs("web", 7);
   box.inputs.nexthopGroupEntryStatus = groups;
   auto const throughGroup = [](U32 id) {
      Vault::Fib::Via via;
      via.intfId = Lumen::IntfId::fromNexthopGroup(id);
      return via;
   };
   box.routeIs(TypeParam::nested[0], TypeParam::RouteType::nexthopGroup,
               box.fecIs(1, {throughGroup(7), throughGroup(8)}));
   auto const text = box.text();
   EXPECT_NE(text.find("via web, Nexthop Group ID 7\n"), std::string::npos) << text;
   EXPECT_NE(text.find("via NexthopGroupUnknown, Nexthop Group ID 8\n"), std::string::npos) << text;
   EXPECT_NE(box.output(2).find(R"("vias":[{"nexthopGroup":{"groupName":"web","groupId":7}},)"), std::string::npos);
}

TEST(Output6Test, aLeakedDropRoute) {
   Box<V6> box;
   box.leakedRouteIs(box.routeIs("2001:db8:3::/48", V6::RouteType::drop, box.fecIs(3, {}), 1, 0), 8);
   EXPECT_NE(box.text().find("\n S L      2001:db8:3::/48 [1/0] (source VRF red)\n           Null0\n\n"),
             std::string::npos);
}

// A via that resolves through another FEC prints what it resolves to beneath it; a loop ends.
TYPED_TEST(OutputTest, hierarchicalViasNestAndLoopsEnd) {
   auto& box = this->box_;
   auto const throughFec = [&](U64 id) {
      Vault::Fib::Via via;
      via.intfId = Lumen::IntfId::fromFecId(box.fecIdOf(id).value());
      return via;
   };
   box.fecIs(2, {box.via(TypeParam::hop, "Ethernet1")});
   box.routeIs(TypeParam::nested[0], TypeParam::ospf, box.fecIs(1, {throughFec(2)}));
   auto const text = box.text();
   EXPECT_NE(text.find("via " + std::string(TypeParam::hop) + ", Ethernet1"), std::string::npos) << text;
   auto const model = box.model();
   auto const& vias = model.find("routes")->members.front().value.find("vias")->members;
   ASSERT_EQ(vias.size(), 1U);
   EXPECT_EQ(vias[0].value.find("resolvedVias")->members[0].value.find("nexthopAddr")->text, TypeParam::hop);

   // Four ways each to the other: without a bound, 4 to the power of 16 vias.
   auto const fourWays = [&](U64 id) {
      std::vector<Vault::Fib::Via> ways;
      for (U32 label = 16; label < 20; ++label) {
         ways.push_back(throughFec(id));
         ways.back().label = Lumen::MplsLabel(label);
      }
      return ways;
   };
   box.fecIs(1, fourWays(2));
   box.fecIs(2, fourWays(1));
   EXPECT_TRUE(testsupport::StrictJson::parse(box.output(2)));
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
   box.routeIs("10.0.0.0/8", T::staticConfig);
   box.hardwareUnprogrammedIs("10.0.0.3/32");
   EXPECT_EQ(box.text(), separator + hardwareWarning + separator +
                             "R - receive, B - broadcast, F - FIB, A - attached, D - directed broadcast\n\n"
                             " B  10.0.0.0 to cpu\n"
                             " R  10.0.0.1 to cpu\n"
                             " A  10.0.0.2 on Ethernet1\n"
                             "*F  10.0.0.3 via 10.0.0.2 on Ethernet1\n"
                             "             via 10.0.0.9 on Ethernet2\n"
                             " R  10.0.0.4 to cpu on Ethernet1\n"
                             " F  10.0.0.5\n"
                             "\n");
   auto const json = box.output(2);
   ASSERT_TRUE(testsupport::StrictJson::parse(json)) << json;
   EXPECT_NE(
       json.find(
           R"("10.0.0.4/32":{"hardwareProgrammed":true,"routeType":"FIB","vias":[{"toCpu":true,"interface":"Ethernet1"}]})"),
       std::string::npos)
       << json;
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
