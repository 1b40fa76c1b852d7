#include "Routing/AttachedRouteStatus.h"
#include "Routing/Rib/RouteCache/Evpn/ViaConfig.h"
#include "Routing/Rib/RouteConfig.h"

#include <gtest/gtest.h>

#include <limits>

using Lumen::IntfId;
using Lumen::IpGenAddr;
using Lumen::IpGenPrefix;
using Routing::Rib::RouteConfig;
using Routing::Rib::RouteConfigKey;
using Routing::Rib::RouteCache::Evpn::ViaConfig;
using Routing::Rib::RouteCache::Evpn::ViaIndex;

namespace {

constexpr char const* viaIndexMessage =
    "Routing::Rib::RouteCache::Evpn::ViaIndex::value < Routing::Rib::RouteCache::Evpn::ViaIndex::min or > "
    "Routing::Rib::RouteCache::Evpn::ViaIndex::max not allowed";

template <class Function>
std::string rangeErrorOf(Function&& function) {
   try {
      function();
   } catch (Zam::RangeError const& error) {
      return error.what();
   }
   return "no error";
}

std::vector<ViaConfig::Via> evpnVias(std::size_t count) {
   std::vector<ViaConfig::Via> vias(count);
   for (std::size_t i = 0; i < count; ++i) {
      vias[i].vni = Lumen::Vni(static_cast<U32>(i + 1));
   }
   return vias;
}

TEST(EvpnViaIndex, RangeDoesNotWrap) {
   EXPECT_EQ(ViaIndex(31).value(), 31);
   for (std::size_t const beyond : {std::size_t{32}, std::size_t{256}, std::numeric_limits<std::size_t>::max()}) {
      EXPECT_EQ(rangeErrorOf([beyond] { ViaIndex{beyond}; }), viaIndexMessage) << beyond;
   }
}

TEST(EvpnViaConfig, HoldsUpTo32ViasInOrderAndKeepsThemWhenMoreAreRefused) {
   auto const config = Zam::makePtr<ViaConfig>();
   constexpr U64 fecId = U64{24} << 56 | 1;
   EXPECT_TRUE(config->via(fecId).empty());
   config->viaIs(fecId, evpnVias(32));
   EXPECT_EQ(rangeErrorOf([&] { config->viaIs(fecId, evpnVias(33)); }), viaIndexMessage);
   auto const vias = config->via(fecId);
   ASSERT_EQ(vias.size(), 32U);
   EXPECT_EQ(vias.back().vni, Lumen::Vni(32));

   config->viaIs(fecId, {});
   EXPECT_TRUE(config->via(fecId).empty());
   EXPECT_TRUE(config->fec().contains(fecId));
   config->viaDel(fecId);
   EXPECT_TRUE(config->fec().empty());
}

TEST(RibRouteConfig, TellsFamiliesAndVrfsApart) {
   auto const config = Zam::makePtr<RouteConfig>();
   std::vector<RouteConfigKey> const keys = {{{}, IpGenPrefix::parse("10.0.0.0/8"), 0},
                                             {{}, IpGenPrefix::parse("a00::/8"), 0},
                                             {{}, IpGenPrefix::parse("10.0.0.0/8"), 1},
                                             {{}, IpGenPrefix::parse("10.0.0.0/9"), 0}};
   for (U64 fecId = 1; auto const& key : keys) {
      config->routeIs(key, {.fecId = fecId++, .vias = {}});
   }
   config->routeDel(keys[2]);
   EXPECT_EQ(config->route(keys[2]), nullptr);
   for (std::size_t const kept : {0U, 1U, 3U}) {
      ASSERT_NE(config->route(keys[kept]), nullptr) << keys[kept];
      EXPECT_EQ(config->route(keys[kept])->fecId, kept + 1) << keys[kept];
   }
}

// A link-local neighbor may be met on several interfaces.
TEST(AttachedRouteStatus, OneAddressOnTwoInterfacesIsTwoRoutes) {
   auto const status = Zam::makePtr<Routing::AttachedRouteStatus>();
   auto const address = IpGenAddr::parse("fe80::1");
   Routing::AttachedRouteKey const first{{}, IntfId::named("Ethernet1"), address};
   Routing::AttachedRouteKey const second{{}, IntfId::named("Ethernet2"), address};
   status->routeIs(first, {{}, 1, true});
   status->routeIs(second, {{}, 2, true});
   status->routeIs(first, {{}, 1, false});
   ASSERT_EQ(status->route().size(), 2U);
   EXPECT_FALSE(status->route().find(first)->active);
   status->routeDel(first);
   ASSERT_EQ(status->route().size(), 1U);
   EXPECT_EQ(status->route().begin()->key, second);
}

}  // namespace
