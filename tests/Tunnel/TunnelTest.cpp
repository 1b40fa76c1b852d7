#include "Tunnel/TunnelTable/TunnelTables.h"
#include "support/Testing.h"

using Tunnel::TunnelId;
using Tunnel::TunnelType;

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
      EXPECT_EQ(testsupport::complaintOf<Zam::RangeError>([&] { table->entryIs(other, {}); }),
                "Tunnel::TunnelTable::tunnelId of another tunnel type not allowed");
      EXPECT_EQ(table->entry(other), nullptr);
   }
   EXPECT_NE(table->entry(own), nullptr);
   table->entryDel(own);
   EXPECT_EQ(table->entry(own), nullptr);
}

}  // namespace
