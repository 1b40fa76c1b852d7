#include "ConfigTesting.h"
#include "tests/cliprint/Capture.h"
#include "tests/support/StrictJson.h"

#include <csignal>

namespace Kiv::Testing {

namespace {

using Lumen::IntfId;
using testsupport::JsonValue;

constexpr char const* legend = "Codes: F - forward, D - drop, NG - nexthop group\n\n";

class StaticRoutesDumpTest : public ::testing::Test {
 protected:
   StaticRoutesDumpTest() {
      dump_.allIntfConfig = intfs_;
      intfs_->intfConfigIs(IntfId::parse("Vlan10"), {.description = "to the \"lab\""});
      inputIs(list_);
   }

   void inputIs(Zam::Ptr<Routing::RouteList> const& list) {
      dump_.routeInputConf.insert(Zam::makePtr<Routing::RouteInput>(list));
   }
   Zam::Ptr<Routing::Route> routeIs(char const* prefix, U8 preference, RouteType type) {
      return list_->routeIs(key(prefix, preference), type);
   }
   static Routing::Via via(char const* hop, char const* intf = "") {
      Routing::Via via;
      via.hop = Lumen::IpGenAddr::parse(hop);
      via.intfId = IntfId::parse(intf);
      return via;
   }

   std::string output(U32 format, RoutingConsts const& defaults = {}) const {
      testing_cliprint::CapturedFile file;
      StaticRoutesRibCommon dump = dump_;
      dump.fd = static_cast<U32>(file.fd());
      dump.fmt = format;
      EXPECT_EQ(dump.dump(defaults), 0);
      return file.text();
   }
   std::string routes(RoutingConsts const& defaults = {}) const {
      auto text = output(1, defaults);
      EXPECT_TRUE(text.starts_with(legend) && text.ends_with('\n')) << text;
      text.pop_back();
      return text.substr(std::min(text.size(), std::string_view(legend).size()));
   }
   std::string json(RoutingConsts const& defaults = {}) const {
      auto const text = output(2, defaults);
      EXPECT_TRUE(testsupport::StrictJson::parse(text).has_value()) << text;
      return text;
   }

   Zam::Ptr<Routing::RouteList> const list_ = routeList();
   Zam::Ptr<Interface::AllIntfConfigDir> const intfs_ = Zam::makePtr<Interface::AllIntfConfigDir>();
   StaticRoutesRibCommon dump_;
};

TEST_F(StaticRoutesDumpTest, empty) {
   EXPECT_EQ(output(1), std::string(legend) + "\n");
   EXPECT_EQ(output(2), "{\"routes\":{}}\n");
   dump_.routeInputConf.clear();
   EXPECT_EQ(output(2), "{\"routes\":{}}\n");
}

TEST_F(StaticRoutesDumpTest, routesByType) {
   routeIs("10.0.0.0/8", 1, RouteType::drop);
   auto const named = routeIs("10.0.0.0/8", 200, RouteType::drop);
   named->tagIs(9);
   named->dropNextHopNameIs("hole");
   routeIs("10.1.0.0/16", 1, RouteType::nexthopGroup)->nexthopGroupNameIs("g1");
   routeIs("10.2.0.0/16", 1, RouteType::l2NexthopGroup);
   routeIs("10.3.0.0/16", 1, RouteType::routeCacheConnected);
   routeIs("10.4.0.0/16", 1, RouteType::forward)->viaIs(via("1.1.1.1"), 5);
   EXPECT_EQ(routes(),
             "D    10.0.0.0/8 [1]\n"
             "      Null0\n"
             "D    10.0.0.0/8 [200] tag 9\n"
             "      Null0, name: hole\n"
             "NG   10.1.0.0/16 [1]\n"
             "      nexthop-group g1\n"
             "L2NG 10.2.0.0/16 [1]\n"
             "RC   10.3.0.0/16 [1]\n"
             "F    10.4.0.0/16 [1]\n"
             "      via 1.1.1.1\n");
   EXPECT_EQ(json(),
             R"({"routes":{"10.0.0.0/8":{"preference":{)"
             R"("1":{"routeType":"drop","preference":1,"vias":[]},)"
             R"("200":{"routeType":"drop","preference":200,"tag":9,"dropNextHopName":"hole","vias":[]}}},)"
             R"("10.1.0.0/16":{"preference":{"1":{"routeType":"nexthopGroup","preference":1,)"
             R"("nexthopGroupName":"g1","vias":[]}}},)"
             R"("10.2.0.0/16":{"preference":{"1":{"routeType":"l2nexthopgroup","preference":1,"vias":[]}}},)"
             R"("10.3.0.0/16":{"preference":{"1":{"routeType":"routeCacheConnected","preference":1,"vias":[]}}},)"
             R"("10.4.0.0/16":{"preference":{"1":{"routeType":"forward","preference":1,)"
             R"("vias":[{"nexthopAddr":"1.1.1.1"}]}}}}})"
             "\n");
   // Of other defaults, what is written is what differs from them.
   auto const others = routes({{}, 1, 9, "hole", 0});
   EXPECT_NE(others.find("D    10.0.0.0/8 [1] tag 0\n      Null0, name: \n"), std::string::npos) << others;
   EXPECT_NE(others.find("D    10.0.0.0/8 [200]\n      Null0\n"), std::string::npos) << others;
}

TEST_F(StaticRoutesDumpTest, viasInBothOutputs) {
   auto labelled = via("1.1.1.1", "Ethernet1");
   labelled.mplsLabel = Lumen::MplsLabel(16);
   auto everything = via("fe80::1", "Vlan10");
   everything.mplsLabel = Lumen::MplsLabel(0);
   everything.egressVrf = "red";
   auto zero = via("0.0.0.0");
   zero.egressVrf = "red";
   auto unlabelled = via("", "Vlan10");
   unlabelled.mplsLabel = Lumen::MplsLabel(17);  // of no next hop, so it is not pushed
   struct {
      Routing::Via via;
      char const* name;
      char const* text;
      char const* model;
   } const cases[] = {
       {via("1.1.1.1"), "", " via 1.1.1.1", R"({"nexthopAddr":"1.1.1.1"})"},
       {via("", "Ethernet1"), "", " Ethernet1", R"({"interface":"Ethernet1"})"},
       {labelled, "", " via 1.1.1.1, label 16, Ethernet1",
        R"({"nexthopAddr":"1.1.1.1","mplsLabel":16,"interface":"Ethernet1"})"},
       {everything, "n", " via fe80::1, label 0, Vlan10 (egress VRF red) (to the \"lab\"), name: n",
        R"({"nexthopAddr":"fe80::1","mplsLabel":0,"interface":"Vlan10","egressVrf":"red",)"
        R"("interfaceDescription":"to the \"lab\"","nexthopName":"n"})"},
       {unlabelled, "", " Vlan10 (to the \"lab\")",
        R"({"interface":"Vlan10","interfaceDescription":"to the \"lab\""})"},
       {zero, "n", " (egress VRF red), name: n", R"({"egressVrf":"red","nexthopName":"n"})"},
       {via(""), "n", ", name: n", R"({"nexthopName":"n"})"},
       {via(""), "", "", "{}"},
   };
   for (auto const& [configured, name, text, model] : cases) {
      auto const route = routeIs("10.0.0.0/8", 1, RouteType::forward);
      route->viaIs(configured, 0);
      route->viaNextHopNameIs(configured, name);
      EXPECT_EQ(routes(), "F    10.0.0.0/8 [1]\n     " + std::string(text) + "\n");
      auto const all = json();
      EXPECT_NE(all.find(std::string("\"vias\":[") + model + "]"), std::string::npos) << all << model;
   }
   routeIs("10.0.0.0/8", 1, RouteType::forward)->viaIs(everything, 0);
   dump_.allIntfConfig = nullptr;
   EXPECT_EQ(routes(), "F    10.0.0.0/8 [1]\n      via fe80::1, label 0, Vlan10 (egress VRF red)\n");
}

// Routes of several inputs in one order, and of these the ones that are asked for.
TEST_F(StaticRoutesDumpTest, inputsMergeAndFiltersSelect) {
   auto const other = routeList();
   inputIs(other);
   U32 tag = 0;
   for (char const* const prefix : {"10.0.0.0/16", "10.0.0.0/8", "2001:db8::/32", "9.0.0.0/8"}) {
      for (U8 const preference : {U8{9}, U8{1}, U8{100}}) {
         auto const& list = preference == 1 ? other : list_;
         auto const route = list->routeIs(key(prefix, preference), RouteType::drop);
         route->tagIs(tag++ % 4);
         route->nonPersistentIs(preference == 100);
      }
   }
   auto const shown = [this](U32 filter, bool dynamic) {
      dump_.tag = filter;
      dump_.dynamic = dynamic;
      std::string keys;
      std::istringstream lines(routes());
      for (std::string line; std::getline(lines, line);) {
         keys += line.starts_with("D") ? line.substr(5, line.find(']') - 4) + " " : "";
      }
      // The model has the same.
      std::string inModel;
      auto const document = testsupport::StrictJson::parse(json());
      for (auto const& [prefix, route] : document->find("routes")->members) {
         for (auto const& [preference, entry] : route.find("preference")->members) {
            inModel.append(prefix).append(" [").append(preference).append("] ");
         }
      }
      EXPECT_EQ(inModel, keys);
      return keys;
   };
   EXPECT_EQ(shown(0, false),
             "9.0.0.0/8 [1] 9.0.0.0/8 [9] 10.0.0.0/8 [1] 10.0.0.0/8 [9] 10.0.0.0/16 [1] 10.0.0.0/16 [9] "
             "2001:db8::/32 [1] 2001:db8::/32 [9] ");
   EXPECT_EQ(shown(0, true), "9.0.0.0/8 [100] 10.0.0.0/8 [100] 10.0.0.0/16 [100] 2001:db8::/32 [100] ");
   EXPECT_EQ(shown(1, false), "9.0.0.0/8 [9] 10.0.0.0/16 [1] ");
   EXPECT_EQ(shown(3, false), "10.0.0.0/8 [9] 2001:db8::/32 [1] ");
   EXPECT_EQ(shown(99, false), "");
}

TEST_F(StaticRoutesDumpTest, aLargeOutputIsStreamedWhole) {
   std::string expected;
   for (U32 i = 0; i < 3000; ++i) {
      auto const prefix = Lumen::Prefix(Lumen::IpAddr(0x0a000000 + i * 256), 24);
      list_->routeIs({{}, prefix, 1}, RouteType::forward)->viaIs(via("1.1.1.1", "Ethernet1"), 0);
      expected += "F    " + prefix.stringValue() + " [1]\n      via 1.1.1.1, Ethernet1\n";
   }
   EXPECT_EQ(routes() == expected, true);
   auto const document = testsupport::StrictJson::parse(json());
   EXPECT_EQ(document->find("routes")->members.size(), 3000);
}

TEST_F(StaticRoutesDumpTest, endsEarly) {
   routeIs("10.0.0.0/8", 1, RouteType::drop);
   dump_.fmt = 2;
   int pipe[2];
   ASSERT_EQ(::pipe(pipe), 0);
   ::close(pipe[0]);
   dump_.fd = static_cast<U32>(pipe[1]);
   EXPECT_EQ(dump_.dump({}), EPIPE);
   ::close(pipe[1]);

   testing_cliprint::CapturedFile file;
   dump_.fd = static_cast<U32>(file.fd());
   cliprint::interruptedIs(true);
   ::testing::internal::CaptureStdout();
   EXPECT_EQ(dump_.dump({}), EINTR);
   auto const said = ::testing::internal::GetCapturedStdout();
   EXPECT_TRUE(said.starts_with("exiting ") && said.ends_with("\n")) << said;
   EXPECT_EQ(file.text(), "");
   EXPECT_EQ(dump_.dump({}), 0);  // the interrupt is over
   EXPECT_NE(file.text(), "");
}

}  // namespace

}  // namespace Kiv::Testing
