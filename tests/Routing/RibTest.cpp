#include "Routing/Rib/RouteCache/Evpn/ViaConfig.h"
#include "support/Testing.h"

using Routing::Rib::RouteCache::Evpn::ViaConfig;
using Routing::Rib::RouteCache::Evpn::ViaIndex;

namespace {

constexpr char const* viaIndexMessage =
    "Routing::Rib::RouteCache::Evpn::ViaIndex::value < Routing::Rib::RouteCache::Evpn::ViaIndex::min or > "
    "Routing::Rib::RouteCache::Evpn::ViaIndex::max not allowed";

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
      EXPECT_EQ(testsupport::complaintOf<Zam::RangeError>([beyond] { ViaIndex{beyond}; }), viaIndexMessage) << beyond;
   }
}

TEST(EvpnViaConfig, HoldsUpTo32ViasInOrderAndKeepsThemWhenMoreAreRefused) {
   auto const config = Zam::makePtr<ViaConfig>();
   constexpr U64 fecId = U64{24} << 56 | 1;
   EXPECT_TRUE(config->via(fecId).empty());
   config->viaIs(fecId, evpnVias(32));
   EXPECT_EQ(testsupport::complaintOf<Zam::RangeError>([&] { config->viaIs(fecId, evpnVias(33)); }), viaIndexMessage);
   auto const vias = config->via(fecId);
   ASSERT_EQ(vias.size(), 32U);
   EXPECT_EQ(vias.back().vni, Lumen::Vni(32));

   config->viaIs(fecId, {});
   EXPECT_TRUE(config->via(fecId).empty());
   EXPECT_TRUE(config->fec().contains(fecId));
   config->viaDel(fecId);
   EXPECT_TRUE(config->fec().empty());
}

}  // namespace
