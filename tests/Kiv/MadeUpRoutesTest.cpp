#include "SorterTesting.h"

// Routes that the FIB does not have, and FECs that the FEC tables do not have.
namespace Kiv::Testing {

namespace {

using EvpnVia = Tunnel::TunnelTable::EvpnVxlanTunnelEntry;
using Lumen::IntfId;
using Lumen::IpGenAddr;
using Routing::Rib::RouteConfigEntry;
using Vault::Fib::FecId;

EvpnVia evpnVia(U32 i) {
   return {{}, Lumen::IpAddr(0x0a000001 + i), Lumen::Vni(i), {}, {}};
}
Routing::Via vtepVia(U32 i) {
   Routing::Via via;
   via.vtepAddr = Lumen::IpAddr(0x0a000001 + i);
   via.vni = Lumen::Vni(i);
   return via;
}

template <class Family>
class MadeUpRoutesTest : public ::testing::Test {
 public:
   // What is shown for a route cache entry of the VRF: the route and its FEC.
   std::pair<typename Family::Route, Zam::Ptr<CachedFec>> shownFor(RouteConfigEntry const& entry) {
      auto const cache = Zam::makePtr<Routing::Rib::RouteConfig>();
      cache->routeIs({{}, Box<Family>::prefix(Family::nested[0]), Box<Family>::vrfId}, entry);
      box_.inputs.routeCacheConfig = cache;
      sorter_ = box_.sorter();
      if (sorter_->sortedRoutes() == 0) {
         return {};
      }
      auto const& route = sorter_->sortedRoute().begin()->value;
      return {route, sorter_->fec(route.fecId)};
   }

   Box<Family> box_;
   Zam::Ptr<typename Family::Sorter> sorter_;
};
TYPED_TEST_SUITE(MadeUpRoutesTest, Families);

// Which neighbours become routes is judged by SelectionOracleTest.
TYPED_TEST(MadeUpRoutesTest, neighboursHaveFecsOfTheirOwn) {
   auto& box = this->box_;
   auto const neighbours = Zam::makePtr<Routing::AttachedRouteStatus>();
   IpGenAddr const address(box.prefix(TypeParam::inNested).address());
   neighbours->routeIs({{}, IntfId::named("Ethernet2"), address}, {{}, box.vrfId, true});
   box.inputs.attachedRouteStatus = neighbours;
   box.inputs.hostRoutes = true;
   std::set<FecId> fecIds;
   auto const other = TypeParam::withLowBits(box.prefix(TypeParam::inNested).address(), 7);
   for (U32 command = 0; command < 3; ++command) {
      auto const sorter = box.sorter();
      auto const fecId = sorter->sortedRoute().find(box.prefix(TypeParam::inNested))->fecId;
      EXPECT_TRUE(fecIds.insert(fecId).second) << "ids are for one route of the process";
      EXPECT_EQ(sorter->fec(fecId)->vias(), 1U);
      auto const next = FecId(fecId.value() + 1);
      box.routeIs((other.stringValue() + (TypeParam::viasShareRouteLine ? "/32" : "/128")).c_str(), TypeParam::ospf,
                  next);
      fecIds.insert(next);
   }
}

// In a table that is walked when the route is made up already.
TEST(MadeUpRoutes4Test, theirFecsAreInNoTable) {
   Box<V4> box;
   auto const cache = Zam::makePtr<Routing::Rib::RouteConfig>();
   cache->routeIs({{}, box.prefix(V4::nested[0]), box.vrfId}, {Routing::RouteType::forward, 3, 44, 0, {vtepVia(1)}});
   box.inputs.routeCacheConfig = cache;
   auto const madeUp = [&] { return box.sorter()->sortedRoute().find(box.prefix(V4::nested[0]))->fecId; };
   FecId const next(madeUp().value() + 1);
   box.routeIs(V4::nested[1], V4::ospf, box.fecIs(next, {box.via(V4::hop, "Ethernet1")}));
   EXPECT_EQ(madeUp().value(), next.value() + 1);
}

// Neighbours that another activity removes while the walk over them lets it in are not shown.
TYPED_TEST(MadeUpRoutesTest, neighboursThatGoDuringAYield) {
   constexpr U32 count = 4500;
   auto& box = this->box_;
   auto const neighbours = Zam::makePtr<Routing::AttachedRouteStatus>();
   auto const key = [](U32 i) {
      auto const low = TypeParam::withLowBits(TypeParam::Prefix::parse(TypeParam::nested[0]).address(), i);
      return Routing::AttachedRouteKey{{}, IntfId::named("Ethernet2"), IpGenAddr(low)};
   };
   for (U32 i = 0; i < count; ++i) {
      neighbours->routeIs(key(i), {{}, box.vrfId, true});
   }
   box.inputs.attachedRouteStatus = neighbours;
   box.inputs.hostRoutes = true;
   auto const removeAll = [&] {
      for (U32 i = 0; i < count; ++i) {
         neighbours->routeDel(key(i));
      }
   };
   changedDuringAYield(removeAll, [&](bool const& changed) {
      auto const shown = box.sorter()->sortedRoutes();
      EXPECT_TRUE(changed ? shown == 2001 || shown == 4002 : shown == count) << shown;
   });
}

TYPED_TEST(MadeUpRoutesTest, routeCacheEntries) {
   auto const unknown = this->shownFor({static_cast<Routing::RouteType>(5), 3, 44, 0, {}}).first;
   EXPECT_EQ(unknown.routeType, TypeParam::RouteType::unknown);
   Routing::Via own;
   own.hop = IpGenAddr::parse(TypeParam::hop);
   own.intfId = IntfId::named("Ethernet1");
   own.mplsLabel = Lumen::MplsLabel(17);
   auto const fec = this->shownFor({Routing::RouteType::forward, 3, 44, 0, {vtepVia(0), own, vtepVia(1)}}).second;
   ASSERT_EQ(fec->vias(), 1U) << "the others are no next hops";
   EXPECT_EQ(fec->via().begin()->key.viaLabel, own.mplsLabel);
   ASSERT_TRUE(fec->viaEvpnEntry().size() == 2 && fec->preparedVias() == 2);
   EXPECT_TRUE(fec->viaEvpnEntry()[0] == evpnVia(0) && fec->viaEvpnEntry()[1] == evpnVia(1));
}

// FECs of the route cache come from its configuration, whatever the FEC tables hold.
TYPED_TEST(MadeUpRoutesTest, evpnFecs) {
   constexpr char const* outOfRange =
       "Routing::Rib::RouteCache::Evpn::ViaIndex::value < Routing::Rib::RouteCache::Evpn::ViaIndex::min or > "
       "Routing::Rib::RouteCache::Evpn::ViaIndex::max not allowed";
   FecId const fecId = FecId::of(24, 5);
   RouteConfigEntry entry{Routing::RouteType::forward, 1, 0, fecId.value(), {}};
   EXPECT_EQ(this->shownFor(entry).second->preparedVias(), 0U) << "no configuration";
   auto const config = Zam::makePtr<Routing::Rib::RouteCache::Evpn::ViaConfig>();
   this->box_.inputs.routeCacheEvpnViaConfig = config;
   EXPECT_EQ(this->shownFor(entry).second->preparedVias(), 0U) << "not in the configuration";
   std::vector<EvpnVia> vias;
   RouteConfigEntry own;
   for (U32 i = 0; i < 32; ++i) {
      vias.push_back(evpnVia(i));
      own.vias.push_back(vtepVia(i));
   }
   config->viaIs(fecId.value(), vias);
   for (auto const& each : {entry, own}) {
      auto const fec = this->shownFor(each).second;
      ASSERT_TRUE(fec->preparedVias() == 32 && fec->viaEvpnEntry().size() == 32 && fec->vias() == 0);
      EXPECT_EQ(fec->viaEvpnEntry()[31], evpnVia(31));
   }
   vias.push_back(evpnVia(32));
   own.vias.push_back(vtepVia(32));
   EXPECT_EQ(testsupport::complaintOf<Zam::RangeError>([&] { config->viaIs(fecId.value(), vias); }), outOfRange);
   EXPECT_EQ(config->via(fecId.value()).size(), 32U) << "those from before stay";
   EXPECT_EQ(testsupport::complaintOf<Zam::RangeError>([&] { this->shownFor(own); }), outOfRange);
}

}  // namespace

}  // namespace Kiv::Testing
