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

// Of a table that is not there, no warning; without configuration, no routing.
TYPED_TEST(OutputTest, missingInputs) {
   auto& box = this->box_;
   box.hardwareUnprogrammedIs(TypeParam::nested[0]);
   EXPECT_FALSE(this->flag("allRoutesProgrammedHardware") || this->flag("routingDisabled"));
   box.inputs.unprogrammedRouteStatus = nullptr;
   box.inputs.routingConfig = nullptr;
   EXPECT_TRUE(this->flag("allRoutesProgrammedHardware") && this->flag("routingDisabled"));
   EXPECT_EQ(box.text().find("WARNING"), std::string::npos);
}

// A default route that is configured, with any preference, but not in the FIB.
TYPED_TEST(OutputTest, aFloatingDefaultRouteIsNotReachable) {
   for (U8 const preference : {U8{1}, U8{200}}) {
      auto const configured = Zam::makePtr<Routing::RouteList>();
      configured->routeIs({{}, this->box_.prefix(TypeParam::everything), preference}, Routing::RouteType::drop);
      this->box_.inputs.routeList = configured;
      EXPECT_EQ(this->box_.model().find("defaultRouteState")->text, "notReachable");
      EXPECT_NE(this->box_.text().find("Gateway of last resort is not reachable\n\n"), std::string::npos);
   }
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

TEST(Output4Test, isisSwitchReplacesTheWholeLegend) {
   Box<V4> box;
   box.inputs.familySwitch = true;
   EXPECT_EQ(box.text(),
             "Codes: I L1 - IS-IS level 1, I L2 - IS-IS level 2\n\nGateway of last resort is not set\n\n\n");
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

// Vias that resolve through each other, four ways each: without a bound, 4 to the power of 16 of them. Where they end
// is said, and what comes behind them is all there.
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
   box.routeIs(TypeParam::nested[1], TypeParam::ospf, box.fecIs(3, {box.via(TypeParam::hop, "Ethernet1")}));
   auto const sorter = box.sorter();
   std::string outputs[2];
   for (U32 const format : {1U, 2U}) {
      testing_cliprint::CapturedFile file;
      EXPECT_FALSE(sorter->printRoutes(static_cast<U32>(file.fd()), format, false));
      EXPECT_EQ(sorter->outputError(), EOVERFLOW);
      outputs[format - 1] = file.text();
   }
   auto const& [text, model] = outputs;
   EXPECT_LT(std::ranges::count(text, '\n'), 66'000);
   EXPECT_NE(text.find("more than 65536 vias, further ones are not shown\n O"), std::string::npos);
   EXPECT_TRUE(text.ends_with(std::string(" via ") + TypeParam::hop + ", Ethernet1\n\n"));
   auto const document = testsupport::StrictJson::parse(model);
   ASSERT_TRUE(document && document->find("routes")->members.size() == 2);
   for (auto const& [prefix, route] : document->find("routes")->members) {
      auto const* const flag = route.find("viasLeftOut");
      EXPECT_EQ(flag != nullptr ? flag->text : "none", prefix == TypeParam::nested[1] ? "none" : "true");
   }
}

// The route cache has a default route that is shown in the place of one that is not.
TYPED_TEST(OutputTest, aSelectedDefaultRouteIsShown) {
   auto& box = this->box_;
   auto const cache = Zam::makePtr<Routing::Rib::RouteConfig>();
   Routing::Via via;
   via.hop = Lumen::IpGenAddr::parse(TypeParam::hop);
   via.intfId = Lumen::IntfId::named("Ethernet1");
   cache->routeIs({{}, box.prefix(TypeParam::everything), box.vrfId}, {Routing::RouteType::forward, 3, 44, 0, {via}});
   box.inputs.routeCacheConfig = cache;
   box.routeIs(TypeParam::everything, TypeParam::ospf, {});  // not printable
   box.inputs.prefix = box.prefix(TypeParam::everything);
   EXPECT_TRUE(box.textAfterLegend().starts_with("Gateway of last resort:\n"));
   EXPECT_EQ(box.model().find("routes")->members.size(), 1U);
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
