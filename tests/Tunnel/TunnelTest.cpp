#include "SrTePolicy/PolicyStatus.h"
#include "Tunnel/TunnelFib/TunnelFib.h"
#include "Tunnel/TunnelTable/TunnelTables.h"

#include <gtest/gtest.h>

#include <set>

using Lumen::IpGenAddr;
using Tunnel::TunnelId;
using Tunnel::TunnelType;
using Tunnel::TunnelTable::EvpnVxlanTunnelEntry;

namespace {

TEST(TunnelId, TypeAndIndexDoNotRunIntoEachOther) {
   constexpr U64 maxIndex = (U64{1} << 44) - 1;
   for (auto const type : {TunnelType::unknown, TunnelType::evpnVxlan, TunnelType::nexthopGroup}) {
      for (U64 const index : {U64{0}, U64{1}, maxIndex}) {
         auto const tunnelId = Tunnel::tunnelIdOf(type, index);
         EXPECT_EQ(Tunnel::tunnelType(tunnelId), type) << index;
         EXPECT_EQ(Tunnel::tunnelIndex(tunnelId), index);
      }
   }
   EXPECT_EQ(Tunnel::tunnelIdOf(TunnelType::evpnVxlan, 1), TunnelId{9} << 44 | 1);
   // A number without a name, alike in its low byte.
   EXPECT_NE(Tunnel::tunnelType(TunnelId{0x109} << 44), TunnelType::evpnVxlan);
   EXPECT_EQ(static_cast<U32>(Tunnel::tunnelType(~TunnelId{0})), 0xfffffU);
}

TEST(EvpnVxlanTunnelEntry, IsPresentByAnyAttribute) {
   EXPECT_FALSE(EvpnVxlanTunnelEntry());
   EXPECT_TRUE((EvpnVxlanTunnelEntry{{}, IpGenAddr::parse("0.0.0.0"), {}, {}, {}}));
   EXPECT_TRUE((EvpnVxlanTunnelEntry{{}, {}, Lumen::Vni(1), {}, {}}));
   EXPECT_TRUE((EvpnVxlanTunnelEntry{{}, {}, {}, Lumen::EthAddr::parse("00:00:00:00:00:01"), {}}));
   EXPECT_TRUE((EvpnVxlanTunnelEntry{{}, {}, {}, {}, Lumen::IntfId::named("Loopback1")}));
}

using namespace Tunnel::TunnelTable;  // NOLINT(google-build-using-namespace): eight tables

template <class Table>
struct TunnelTables : testing::Test {};
using Tables = testing::Types<EvpnVxlanTunnelTable, IsisSrTunnelTable, StaticTunnelTable, LdpTunnelTable,
                              BgpLuTunnelTable, NexthopGroupTunnelTable, RsvpLerTunnelTable, IsisFlexAlgoTunnelTable>;
TYPED_TEST_SUITE(TunnelTables, Tables);

TYPED_TEST(TunnelTables, TakeTunnelsOfTheirTypeOnly) {
   auto const table = Zam::makePtr<TypeParam>();
   auto const own = Tunnel::tunnelIdOf(TypeParam::tunnelType, 1);
   table->entryIs(own, {});
   for (auto const& other : {TunnelId{1}, Tunnel::tunnelIdOf(static_cast<TunnelType>(12), 1), own << 1}) {
      try {
         table->entryIs(other, {});
         ADD_FAILURE() << other;
      } catch (Zam::RangeError const& error) {
         EXPECT_STREQ(error.what(), "Tunnel::TunnelTable::tunnelId of another tunnel type not allowed");
      }
      EXPECT_EQ(table->entry(other), nullptr);
   }
   EXPECT_NE(table->entry(own), nullptr);
   table->entryDel(own);
   EXPECT_EQ(table->entry(own), nullptr);
}

TEST(TunnelTablesTogether, NoTwoClaimOneTunnelType) {
   std::set<TunnelType> const types = {
       EvpnVxlanTunnelTable::tunnelType,    IsisSrTunnelTable::tunnelType,  StaticTunnelTable::tunnelType,
       LdpTunnelTable::tunnelType,          BgpLuTunnelTable::tunnelType,   NexthopGroupTunnelTable::tunnelType,
       IsisFlexAlgoTunnelTable::tunnelType, RsvpLerTunnelTable::tunnelType,
   };
   EXPECT_EQ(types.size(), 8U);
   EXPECT_FALSE(types.contains(TunnelType::unknown));
}

// Tunnels and label stacks have ids of their own, which may coincide.
TEST(TunnelFib, TunnelsAndLabelStacksComeAndGoSeparately) {
   auto const fib = Zam::makePtr<Tunnel::TunnelFib::TunnelFib>();
   using Lumen::MplsLabelOperation;
   MplsLabelOperation const push(MplsLabelOperation::Operation::push, {Lumen::MplsLabel(100), Lumen::MplsLabel(200)});
   fib->entryIs(7,
                {.vias = {{{}, Lumen::IntfId::named("Ethernet1"), IpGenAddr::parse("10.0.0.1"), 7}}, .backupVias = {}});
   fib->labelStackEncapIs(7, push);
   fib->entryDel(7);
   EXPECT_EQ(fib->entry(7), nullptr);
   ASSERT_NE(fib->labelStackEncap(7), nullptr);
   EXPECT_EQ(*fib->labelStackEncap(7), push);
   EXPECT_EQ(fib->labelStackEncap(0), nullptr);
}

TEST(PolicyStatus, KeysOfBothFamiliesAndColorsAreApart) {
   auto const status = Zam::makePtr<SrTePolicy::PolicyStatus>();
   std::vector<SrTePolicy::PolicyKey> const keys = {{{}, IpGenAddr::parse("0.0.0.0"), 1},
                                                    {{}, IpGenAddr::parse("::"), 1},
                                                    {{}, IpGenAddr(), 1},
                                                    {{}, IpGenAddr::parse("::"), 2}};
   for (TunnelId tunnelId = 1; auto const& key : keys) {
      status->policyIs(key, tunnelId++);
   }
   for (TunnelId tunnelId = 1; auto const& key : keys) {
      ASSERT_NE(status->policy(key), nullptr) << key;
      EXPECT_EQ(*status->policy(key), tunnelId++) << key;
   }
}

}  // namespace
