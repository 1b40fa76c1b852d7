#include "Routing/RouteList.h"

#include <gtest/gtest.h>

#include <algorithm>

using Lumen::IntfId;
using Lumen::IpGenAddr;
using Lumen::IpGenPrefix;
using Routing::RouteKey;
using Routing::RouteType;
using Routing::Via;

namespace {

RouteKey key(std::string_view prefix, Routing::RoutePreference preference = 1) {
   return {{}, IpGenPrefix::parse(prefix), preference};
}

// In ascending order. Several are alike in address bytes and length, and differ in family or preference alone.
std::vector<RouteKey> const keys = {key("0.0.0.0/0"),     key("0.0.0.0/0", 255), key("::/0"),
                                    key("10.0.0.0/8", 1), key("10.0.0.0/8", 2),  key("a00::/8", 1),
                                    key("10.0.0.0/9", 1), key("2001:db8::/32"),  key("255.255.255.255/32")};

TEST(RouteKey, OrdersByPrefixThenPreference) {
   auto shuffled = keys;
   std::ranges::reverse(shuffled);
   std::ranges::sort(shuffled);
   EXPECT_EQ(shuffled, keys);
   EXPECT_TRUE(std::ranges::adjacent_find(shuffled) == shuffled.end());
}

TEST(RouteList, TellsKeysOfBothFamiliesApart) {
   auto const list = Zam::makePtr<Routing::RouteList>();
   U32 tag = 0;
   for (auto const& each : keys) {
      list->routeIs(each, RouteType::forward)->tagIs(++tag);
   }
   EXPECT_EQ(list->route().size(), keys.size());
   list->routeDel(key("::/0"));
   tag = 0;
   for (auto const& each : keys) {
      auto const* const route = list->route(each);
      ++tag;
      ASSERT_EQ(route == nullptr, each == key("::/0")) << each;
      EXPECT_TRUE(route == nullptr || (route->key() == each && route->tag() == tag)) << each;
   }
   EXPECT_EQ(list->route(key("10.0.0.0/8", 3)), nullptr);
}

TEST(RouteList, ReplacedRouteIsFreshAndLeavesItsHolderTheOldOne) {
   auto const list = Zam::makePtr<Routing::RouteList>();
   auto const old = list->routeIs(key("10.0.0.0/8"), RouteType::forward);
   old->viaIs(Via(), 7);
   auto const fresh = list->routeIs(key("10.0.0.0/8"), RouteType::drop);
   EXPECT_EQ(list->route(key("10.0.0.0/8")), fresh.get());
   EXPECT_EQ(fresh->routeType(), RouteType::drop);
   EXPECT_TRUE(fresh->via().empty());
   EXPECT_EQ(old->via().size(), 1U);
}

// Each differs from the one before in one attribute, a later attribute than all that differ after it.
std::vector<Via> viasInOrder() {
   std::vector<Via> vias(1);
   auto const next = [&vias](auto Via::*member, auto value) {
      vias.push_back(Via{});
      vias.back().*member = value;
   };
   next(&Via::vtepSipValidation, true);
   next(&Via::localIntf, IntfId::named("Loopback0"));
   next(&Via::routerMac, Lumen::EthAddr::parse("00:00:00:00:00:01"));
   next(&Via::vni, Lumen::Vni(1));
   next(&Via::vtepAddr, IpGenAddr::parse("0.0.0.0"));
   next(&Via::egressVrf, L3::VrfName("red"));
   next(&Via::mplsLabel, Lumen::MplsLabel(Lumen::MplsLabel::luWithdraw));
   next(&Via::intfId, IntfId::named("Ethernet2"));
   next(&Via::intfId, IntfId::named("Ethernet10"));
   next(&Via::hop, IpGenAddr::parse("0.0.0.0"));
   next(&Via::hop, IpGenAddr::parse("9.9.9.9"));
   next(&Via::hop, IpGenAddr::parse("10.0.0.1"));
   next(&Via::hop, IpGenAddr::parse("::"));
   return vias;
}

TEST(Via, OrderAgreesWithEqualityInEveryAttribute) {
   auto const vias = viasInOrder();
   for (std::size_t i = 0; i < vias.size(); ++i) {
      for (std::size_t j = 0; j < vias.size(); ++j) {
         EXPECT_EQ(vias[i] <=> vias[j], i <=> j) << vias[i] << vias[j];
         EXPECT_EQ(vias[i] == vias[j], i == j) << vias[i] << vias[j];
      }
   }
}

TEST(Via, TextReadsBackAndKeysAreKept) {
   auto const route = Zam::makePtr<Routing::Route>(key("::/0"), RouteType::forward);
   Routing::RouteMetric metric = 0;
   for (auto const& via : viasInOrder()) {
      EXPECT_EQ(Zam::strepToValue<Via>(Zam::valueToStrep(via)), via);
      route->viaIs(via, ++metric);
   }
   EXPECT_EQ(route->via().size(), viasInOrder().size());
   auto const* const last = route->via().find(viasInOrder().back());
   ASSERT_NE(last, nullptr);
   EXPECT_EQ(*last, metric);
}

}  // namespace
