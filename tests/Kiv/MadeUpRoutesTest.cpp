#include "Kiv/routedisplay/MadeUpRoutes.h"
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

TYPED_TEST(MadeUpRoutesTest, neighboursOnTwoInterfacesAreOneRoute) {
   auto& box = this->box_;
   auto const neighbours = Zam::makePtr<Routing::AttachedRouteStatus>();
   auto const neighbourIs = [&](char const* intf, U32 vrfId, bool active) {
      IpGenAddr const address(box.prefix(TypeParam::inNested).address());
      neighbours->routeIs({{}, IntfId::named(intf), address}, {{}, vrfId, active});
   };
   neighbourIs("Ethernet2", box.vrfId, true);
   neighbourIs("Ethernet1", box.vrfId, true);
   neighbourIs("Ethernet3", box.vrfId, false);
   neighbourIs("Ethernet4", 8, true);
   box.inputs.attachedRouteStatus = neighbours;
   box.inputs.hostRoutes = true;
   std::set<FecId> fecIds;
   for (U32 command = 0; command < 2; ++command) {
      auto const sorter = box.sorter();
      ASSERT_EQ(sorter->sortedRoutes(), 1U);
      auto const& route = sorter->sortedRoute().begin()->value;
      EXPECT_EQ(route.prefix, box.prefix(TypeParam::inNested));
      EXPECT_EQ(route.routeType, TypeParam::RouteType::attached);
      EXPECT_EQ(route.fecId.adjType(), 4);
      EXPECT_TRUE(fecIds.insert(route.fecId).second) << "ids are for one route of the process";
      std::string vias;
      for (auto const& [via, present] : sorter->fec(route.fecId)->via()) {
         vias += via.intfId.stringValue() + (present && via.hop.isEmpty() ? " " : "?");
         EXPECT_TRUE(via.vrfId == Vrf::VrfIdMap::noVrf && via.viaLabel == Lumen::MplsLabel() &&
                     via.viaWeight.bytes().empty());
      }
      EXPECT_EQ(vias, "Ethernet1 Ethernet2 ");
   }
   auto const fib = box.routeIs(TypeParam::inNested, TypeParam::ospf);
   auto const sorter = box.sorter();
   ASSERT_EQ(sorter->sortedRoutes(), 1U);
   EXPECT_EQ(sorter->sortedRoute().begin()->value, fib) << "the FIB's own comes first";
   EXPECT_EQ(sorter->fec(fib.fecId)->vias(), 1U);
}

TYPED_TEST(MadeUpRoutesTest, routeCacheEntries) {
   using Shown = typename TypeParam::RouteType;
   struct Case {
      Routing::RouteType type;
      Shown shown;
   };
   Case const cases[] = {
       {Routing::RouteType::forward, Shown::routeCacheForward},
       {Routing::RouteType::drop, Shown::drop},
       {Routing::RouteType::nexthopGroup, Shown::nexthopGroup},
       {Routing::RouteType::l2NexthopGroup, Shown::l2NexthopGroup},
       {Routing::RouteType::routeCacheConnected, Shown::routeCacheConnected},
       {static_cast<Routing::RouteType>(5), Shown::unknown},
   };
   for (auto const& [type, shown] : cases) {
      EXPECT_EQ(this->shownFor({type, 3, 44, 0, {}}).first.routeType, shown);
   }
   Routing::Via own;
   own.hop = IpGenAddr::parse(TypeParam::hop);
   own.intfId = IntfId::named("Ethernet1");
   own.mplsLabel = Lumen::MplsLabel(17);
   auto const [route, fec] = this->shownFor({Routing::RouteType::forward, 3, 44, 0, {vtepVia(0), own, vtepVia(1)}});
   EXPECT_TRUE(route.preference == 3 && route.metric == 44 && route.srcVrfId == Vrf::VrfIdMap::noVrf);
   EXPECT_EQ(route.fecId.adjType(), 4);
   ASSERT_EQ(fec->vias(), 1U) << "the others are no next hops";
   auto const& via = fec->via().begin()->key;
   EXPECT_TRUE(via.hop == own.hop && via.intfId == own.intfId && via.viaLabel == own.mplsLabel);
   ASSERT_TRUE(fec->viaEvpnEntry.size() == 2 && fec->preparedVias == 2);
   EXPECT_TRUE(*fec->viaEvpnEntry.find(0) == evpnVia(0) && *fec->viaEvpnEntry.find(1) == evpnVia(1));
   FecId const ordinary = this->box_.fecIs(3, {this->box_.via(TypeParam::hop, "Ethernet9")});
   auto const [through, itsFec] = this->shownFor({Routing::RouteType::forward, 1, 0, ordinary.value(), {own}});
   EXPECT_EQ(through.fecId, ordinary) << "a FEC goes before the entry's own vias";
   EXPECT_EQ(itsFec->via().begin()->key.intfId, IntfId::named("Ethernet9"));
}

// FECs of the route cache come from its configuration, whatever the FEC tables hold.
TYPED_TEST(MadeUpRoutesTest, evpnFecs) {
   constexpr char const* outOfRange =
       "Routing::Rib::RouteCache::Evpn::ViaIndex::value < Routing::Rib::RouteCache::Evpn::ViaIndex::min or > "
       "Routing::Rib::RouteCache::Evpn::ViaIndex::max not allowed";
   FecId const fecId = FecId::of(24, 5);
   RouteConfigEntry entry{Routing::RouteType::forward, 1, 0, fecId.value(), {}};
   EXPECT_EQ(this->shownFor(entry).second->preparedVias, 0U) << "no configuration";
   auto const config = Zam::makePtr<Routing::Rib::RouteCache::Evpn::ViaConfig>();
   this->box_.inputs.routeCacheEvpnViaConfig = config;
   EXPECT_EQ(this->shownFor(entry).second->preparedVias, 0U) << "not in the configuration";
   std::vector<EvpnVia> vias;
   RouteConfigEntry own;
   for (U32 i = 0; i < 32; ++i) {
      vias.push_back(evpnVia(i));
      own.vias.push_back(vtepVia(i));
   }
   config->viaIs(fecId.value(), vias);
   for (auto const& each : {entry, own}) {
      auto const fec = this->shownFor(each).second;
      ASSERT_TRUE(fec->preparedVias == 32 && fec->viaEvpnEntry.size() == 32 && fec->vias() == 0);
      EXPECT_EQ(*fec->viaEvpnEntry.find(31), evpnVia(31));
   }
   vias.push_back(evpnVia(32));
   own.vias.push_back(vtepVia(32));
   EXPECT_EQ(testsupport::complaintOf<Zam::RangeError>([&] { config->viaIs(fecId.value(), vias); }), outOfRange);
   EXPECT_EQ(config->via(fecId.value()).size(), 32U) << "those from before stay";
   EXPECT_EQ(testsupport::complaintOf<Zam::RangeError>([&] { this->shownFor(own); }), outOfRange);
}

}  // namespace

}  // namespace Kiv::Testing
