#include "ConfigTesting.h"
#include "tests/cliprint/Capture.h"
#include "tests/support/StrictJson.h"

namespace Kiv::Testing {

namespace {

using Lumen::IntfId;
using testsupport::JsonValue;

constexpr char const* legend = "Codes: F - forward, D - drop, NG - nexthop group\n\n";

class StaticRoutesDumpTest : public ::testing::Test {
 protected:
   StaticRoutesDumpTest() {
      dump_.allIntfConfig = intfs_;
      intfs_->intfConfigIs(IntfId::parse("Vlan10"), {.description = "to the \"lab\x1b\""});
      inputIs(list_);
   }

   void inputIs(Zam::Ptr<Routing::RouteList> const& list) {
      dump_.routeInputConf.insert(Zam::makePtr<Routing::RouteInput>(list));
   }
   Zam::Ptr<Routing::Route> routeIs(char const* prefix, U8 preference, RouteType type) {
      return list_->routeIs(key(prefix, preference), type);
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

TEST_F(StaticRoutesDumpTest, routesInBothOutputs) {
   auto const expectRoutes = [this](char const* section, RoutingConsts const& defaults) {
      for (auto const& [configured, outputs] : casesOf(section)) {
         auto const parts = partsOf(configured);
         auto const route = routeOf(list_, parts);
         if (route->routeType() == RouteType::forward) {
            auto via = through(parts[4], parts[5]);
            via.mplsLabel = parts[6].empty() ? Lumen::MplsLabel() : Lumen::MplsLabel::parse(parts[6]);
            via.egressVrf = parts[7];
            route->viaIs(via, 5);
            route->viaNextHopNameIs(via, parts[3]);
         }
         auto const model = json(defaults);
         std::string const before = R"({"routes":{"10.0.0.0/8":{"preference":{)";
         EXPECT_EQ(onOneLine(routes(defaults)) + " | " + model.substr(before.size(), model.size() - before.size() - 5),
                   outputs)
             << configured;
         EXPECT_TRUE(model.starts_with(before) && model.ends_with("}}}}\n")) << model;
         list_->routeDel(route->key());
      }
   };
   expectRoutes("shown: type, preference, tag, name, next hop, interface, label, egress VRF", {});
   expectRoutes("shown, with other defaults", {{}, 1, 9, "hole", 0});
   dump_.allIntfConfig = nullptr;
   expectRoutes("shown, without descriptions", {});
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

}  // namespace

}  // namespace Kiv::Testing
