#include "Kiv/KivCliPrint.h"
#include "Kiv/common/RouteTypeStrings.h"
#include "tests/cliprint/Capture.h"

namespace Kiv {

namespace {

using V4 = Routing::Fib::RouteType;
using V6 = Routing6::Fib::RouteType;

// All types that have an entry, as ranges.
template <class RouteType>
std::string typesWithEntry() {
   std::string ranges;
   bool within = false;
   for (int i = 0; i <= 256; ++i) {
      auto const* const strings = i < 256 ? routeTypeStringsFind(static_cast<RouteType>(i)) : nullptr;
      EXPECT_TRUE(strings == nullptr || std::string_view(strings->code).size() <= 4)
          << i << " is wider than its column";
      if (std::exchange(within, strings != nullptr) != within) {
         ranges += within ? " " + std::to_string(i) : "-" + std::to_string(i - 1);
      }
   }
   return ranges;
}

TEST(RouteTypeStringsTest, hasAnEntryForEveryTypeButTheOnesLeftOut) {
   EXPECT_EQ(typesWithEntry<V4>(), " 0-5 7-37 39-44");
   EXPECT_EQ(typesWithEntry<V6>(), " 0-24 26-31");
}

TEST(RouteTypeStringsTest, protocolFilterComparesWholeCodes) {
   struct Route {
      V4 routeType;
   };
   EXPECT_FALSE(protocolMatch(Route{V4::ospf3Nssa}, "O"));
   EXPECT_TRUE(protocolMatch(Route{V4::ospf3Nssa}, "O3"));
   EXPECT_FALSE(protocolMatch(Route{V4::ospfExternalType1}, "o"));
}

// What the library's attributes print, in text and in the model.
TEST(KivCliPrintTest, typesInBothFormats) {
   auto const walk = [](cliprint::RendererV2& r) {
      cliprint::RouteTypeAttrInfo type("type", r);
      type.setValue(V4::ospfInterArea);
      cliprint::HostRouteTypeAttrInfo host("host", r);
      host.setValue(V6::attached);
      cliprint::RibRouteTypeAttrInfo rib("rib", r);
      rib.setValue(Routing::RouteType::l2NexthopGroup);
      cliprint::DecapTypeAttrInfo decap("decap", r);
      decap.setValue(Routing::Rib::DecapActionType::ipIp);
      r.addAttributes("%-5s|%s|%s|%s", type.getArg(), host.getArg(), rib.getArg(), decap.getArg());
   };
   EXPECT_EQ(testing_cliprint::rendered(1, walk), "O IA |A  |L2NG|IP-in-IP");
   EXPECT_EQ(testing_cliprint::rendered(2, walk),
             R"({"type":"ospfInterArea","host":"attached","rib":"l2nexthopgroup","decap":"ipIp"})"
             "\n");
}

}  // namespace

}  // namespace Kiv
