#include "Kiv/KivCliPrint.h"
#include "Kiv/routedisplay/RouteTypeStrings.h"
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

// The words in which the families differ, and entries whose neighbours are easily swapped with them.
TEST(RouteTypeStringsTest, spellsTheWordsOfEachFamily) {
   struct Case {
      RouteTypeStrings const& strings;
      std::string expected;
   };
   auto const joined = [](RouteTypeStrings const& s) {
      return std::string(s.code) + "|" + s.modelWord + "|" + s.protocolCode + "|" + s.summaryCategory;
   };
   for (auto const& [strings, expected] : {
            Case{routeTypeStringsLookup(V4::ospfInterArea), "O IA|ospfInterArea|O|ospfInterArea"},
            Case{routeTypeStringsLookup(V4::ospfNssaExternalType2), "O N2|ospfNssaExternalType2|O|nssaExternal2"},
            Case{routeTypeStringsLookup(V4::eBgpLeaked), "B E|eBGP|B|bgpExternal"},
            Case{routeTypeStringsLookup(V4::isisLevel2), "I L2|ISISLevel2|I|isisLevel2"},
            Case{routeTypeStringsLookup(V6::isisLevel2), "I L2|isisL2|I|isisLevel2"},
            Case{routeTypeStringsLookup(V4::nexthopGroup), "NG|nexthopGroupStaticRoute|S|staticNexthopGroup"},
            Case{routeTypeStringsLookup(V4::drop), "S|dropRoute|S|internal"},
            Case{routeTypeStringsLookup(V4::dhcp), "DH|dhcp|DH|DhcpDefaultRoute"},
            Case{routeTypeStringsLookup(V6::dhcp), "DH|dhcp|DH|dhcp"},
            Case{routeTypeStringsLookup(V6::rip), "R|RIP|R|"},
            Case{routeTypeStringsLookup(V6::ospf), "O3|ospf|O3|ospfTotal"},
            Case{routeTypeStringsLookup(V4::attached), "|||attached"},
            Case{routeTypeStringsLookup(V4::routeCacheForward), "RCF|routeCacheForward|RCF|routeCacheForward"},
        }) {
      EXPECT_EQ(joined(strings), expected);
   }
}

TEST(RouteTypeStringsTest, protocolFilterComparesWholeCodes) {
   struct Route {
      V4 routeType;
   };
   EXPECT_TRUE(protocolMatch(Route{V4::ospfExternalType1}, "O"));
   EXPECT_FALSE(protocolMatch(Route{V4::ospf3Nssa}, "O"));
   EXPECT_TRUE(protocolMatch(Route{V4::ospf3Nssa}, "O3"));
   EXPECT_FALSE(protocolMatch(Route{V4::ospfExternalType1}, "o"));
   EXPECT_TRUE(protocolMatch(Route{V4::unknown}, ""));
}

TEST(RouteTypeStringsDeathTest, unknownTypesAreProgrammingErrors) {
   EXPECT_DEATH(pcode(static_cast<V4>(6)), "unexpected RouteType.*routeTypeStringsLookup\\(Routing::Fib::RouteType\\)");
   EXPECT_DEATH(pcodeAsWord(static_cast<V6>(25)), "unexpected RouteType.*Routing6");
   EXPECT_DEATH(ribRouteType(static_cast<Routing::RouteType>(5)), "!\"Invalid Routing::RouteType argument\"");
}

TEST(RouteTypeStringsTest, hostCodesKeepTheLetterOfConnectedRoutes) {
   EXPECT_STREQ(hcodeWord(V4::connected), "FIB");
   EXPECT_STREQ(hcodeWord(V6::connected), "FIB");
   EXPECT_EQ(std::string({hcode(V4::connected), hcode(V4::receive), hcode(V4::directedBroadcast), hcode(V6::connected),
                          hcode(V6::attached), hcode(V6::staticConfig)}),
             "RRDRAF");
}

// What the library's attributes print, in text and in the model.
TEST(KivCliPrintTest, flagsAndTypesInBothFormats) {
   auto const walk = [](cliprint::RendererV2& r) {
      for (bool const flag : {true, false}) {
         cliprint::HardwareProgrammedAttrInfo hardware("hardware", r);
         hardware.setValue(flag);
         cliprint::KernelProgrammedAttrInfo kernel("kernel", r);
         kernel.setValue(flag);
         cliprint::RouteLeakedAttrInfo leaked("leaked", r);
         leaked.setValue(flag);
         cliprint::StringAttrInfo const key("key", r, flag ? "yes" : "no");
         r.startDictEntry(key);
         r.addAttributes("[%s%s%s]", hardware.getArg(), kernel.getArg(), leaked.getArg());
         if (r.isModel()) {
            r.endJsonDict();
         }
      }
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
   EXPECT_EQ(testing_cliprint::rendered(1, walk), "[   L][*%]O IA |A  |L2NG|IP-in-IP");
   EXPECT_EQ(testing_cliprint::rendered(2, walk),
             R"({"yes":{"hardware":true,"kernel":true,"leaked":true},)"
             R"("no":{"hardware":false,"kernel":false,"leaked":false},)"
             R"("type":"ospfInterArea","host":"attached","rib":"l2nexthopgroup","decap":"ipIp"})"
             "\n");
}

TEST(KivCliPrintDeathTest, thereIsNoThirdFormat) {
   testing_cliprint::CapturedFile file;
   cliprint::CliPrintBuffer buffer(file.fd());
   cliprint::RendererV2 renderer(3, buffer, false);
   cliprint::HardwareProgrammedAttrInfo hardware("hardware", renderer);
   EXPECT_DEATH(hardware.setValue(true), "assertion failed: 0, source Kiv/KivCliPrint.*HardwareProgrammed");
   cliprint::RouteTypeAttrInfo type("type", renderer);
   EXPECT_DEATH(type.setValue(V4::kernel), "assertion failed: 0, source Kiv/KivCliPrint.*RouteTypeAttrInfo");
}

}  // namespace

}  // namespace Kiv
