#include "Routing/Rib/RouteCache/Evpn/ViaConfig.h"
#include "support/Testing.h"

namespace {

using Routing::Rib::RouteCache::Evpn::ViaConfig;
using Routing::Rib::RouteCache::Evpn::ViaIndex;

TEST(EvpnViaIndex, RangeDoesNotWrap) {
   EXPECT_EQ(ViaIndex(31).value(), 31);
   for (std::size_t const beyond : {std::size_t{32}, std::size_t{256}, std::numeric_limits<std::size_t>::max()}) {
      EXPECT_THROW(ViaIndex{beyond}, Zam::RangeError) << beyond;
   }
}

TEST(EvpnViaConfig, AFecThatLosesItsViasStaysUntilItIsDeleted) {
   auto const config = Zam::makePtr<ViaConfig>();
   EXPECT_TRUE(config->via(1).empty());
   config->viaIs(1, std::vector<ViaConfig::Via>(2));
   config->viaIs(1, {});
   EXPECT_TRUE(config->via(1).empty() && config->fec().contains(1));
   config->viaDel(1);
   EXPECT_TRUE(config->fec().empty());
}

}  // namespace
