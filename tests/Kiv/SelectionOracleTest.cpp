#include "SelectionOracle.h"

namespace Kiv::Testing {

namespace {

using Lumen::IntfId;
using Lumen::IpGenAddr;
using Vault::Fib::Via;

// Tables in which everything that selection tells apart happens often: prefixes that differ in a few places, few FECs,
// few interfaces.
template <class Family>
class RandomWorld : public World<Family> {
 public:
   using Prefix = typename Family::Prefix;
   using RouteType = typename Family::RouteType;
   static constexpr U32 large = 3000;
   static constexpr U32 width = Prefix::maxLength;

   RandomWorld(U32 seed, U32 count, bool sharesFecs)
       : random_(seed),
         isLarge_(count >= large),
         sharesFecs_(sharesFecs) {
      for (U32 i = 0; i < 12; ++i) {
         fecIds_.push_back(FecId::of(oneOf<U8>({1, 2, 15, 24, 32}), 1 + random_.below(4)));
      }
      makeTunnels();
      makeFecs();
      makeRoutes(count);
      makeInterfaces();
      makeRouteCache();
      this->inputs.vrfId = Box<Family>::vrfId;
   }

   template <class T>
   T oneOf(std::vector<T> const& choices) {
      return choices[random_.below(static_cast<U32>(choices.size()))];
   }
   bool oneIn(U32 many) { return random_.below(many) == 0; }
   U32 below(U32 end) { return random_.below(end); }

   std::string hostBits() {
      auto bits = bitsOf(Prefix::parse(Family::inNested));
      for (U32 at = width / 4; !isLarge_ && at <= width; at += width / 4) {
         bits[at - 1] = oneOf<char>({'0', '1'});
         bits[at % width] = oneOf<char>({'0', '1'});
      }
      for (U32 at = width - 12; isLarge_ && at < width; ++at) {
         bits[at] = oneOf<char>({'0', '1'});
      }
      return bits;
   }
   std::string someBits() {
      auto const length = isLarge_   ? width - below(10)
                          : oneIn(3) ? width
                          : oneIn(2) ? width / 4 * below(5)
                                     : below(width + 1);
      return oneIn(40) ? bitsOf(Lumen::Ip6Prefix::parse("fe80::/10")) : hostBits().substr(0, length);
   }
   Prefix somePrefix() { return prefixOf<Prefix>(oneIn(2) ? oneOf(this->routes).first : someBits()); }

   // Any request, whose shape is still to be told. A collection that discards has filters that can.
   Request<Family> someRequest(bool discarding = false) {
      Request<Family> request{this->inputs, {}};
      request.inputs.protocol = oneIn(3) ? oneOf<char const*>({"C", "S", "O", "O3", "RC", "B", "Z9"}) : "";
      request.inputs.showHidden = oneIn(3);
      auto const coll = routeFilterCollFactory(discarding);
      coll->filterAllIs(oneIn(4));
      while (oneIn(2)) {
         request.restrictions.push_back(someRestriction(discarding));
         coll->filterCollIs(request.restrictions.back().filter);
      }
      request.inputs.routeFilterColl = coll->empty() && oneIn(2) ? nullptr : coll;
      return request;
   }

 private:
   Restriction someRestriction(bool discarding) {
      auto const hop = someHop();
      auto const intfId = someIntf();
      std::vector<Restriction> const all{
          {routeFilterIpFactory(hop), [hop](auto const& via) { return via.hop == hop; }},
          {routeFilterIntfFactory(Zam::makePtr<Interface::IntfStatus>(intfId)),
           [intfId](auto const& via) { return via.intfId == intfId; }},
          {routeFilterNextHopGroupFactory(7, false),
           [](auto const& via) { return via.intfId == IntfId::fromNexthopGroup(7); }},
          {routeFilterNextHopGroupFactory(7, true),
           [](auto const& via) { return via.intfId.kind() == IntfId::Kind::nexthopGroup; }},
          {routeFilterIntfFactory(nullptr), [](auto const&) { return false; }}};
      return all[below(discarding ? 2 : 5)];
   }

   IpGenAddr someHop() {
      return IpGenAddr::parse(oneOf<char const*>({"192.0.2.1", "192.0.2.2", "fe80::1", "::ffff:192.0.2.1"}));
   }
   IntfId someIntf() {
      return oneOf<IntfId>({IntfId(), IntfId::named("Ethernet1"), IntfId::named("Ethernet2"),
                            IntfId::fromNexthopGroup(7), IntfId::fromNexthopGroup(0),
                            IntfId::fromFecId(oneOf(fecIds_).value()), IntfId::fromFecId(oneOf(fecIds_).value()),
                            IntfId::fromTunnelId(oneOf(tunnelIds))});
   }
   Via someVia() {
      Via via;
      via.hop = oneIn(3) ? IpGenAddr() : someHop();
      via.intfId = oneIn(2) ? IntfId() : someIntf();
      via.tunnelId = oneIn(4) ? oneOf(tunnelIds) : 0;
      via.forwardingAction = oneIn(3) ? static_cast<Vault::Fib::ForwardingAction>(below(5)) : via.forwardingAction;
      via.forwardingVrf = 8;
      via.fecId = oneIn(2) ? oneOf(fecIds_) : FecId();
      via.weight = static_cast<U16>(1 + below(2));
      return via;
   }
   // Set up, or known to the table of their type alone.
   void makeTunnels() {
      auto const setUp = Zam::makePtr<Tunnel::TunnelFib::TunnelFib>();
      auto const ldp = Zam::makePtr<Tunnel::TunnelTable::LdpTunnelTable>();
      auto const vxlan = Zam::makePtr<Tunnel::TunnelTable::EvpnVxlanTunnelTable>();
      for (auto const tunnel : tunnelIds) {
         if (oneIn(3)) {
            continue;
         }
         auto& ways = this->tunnels[tunnel];
         if (tunnel == tunnelIds[2]) {
            ldp->entryIs(tunnel, {});
         } else if (tunnel == tunnelIds[3]) {
            vxlan->entryIs(tunnel, {{}, someHop(), Lumen::Vni(5), {}, {}});
         } else {
            ways = {someIntf(), someIntf()};
            setUp->entryIs(tunnel, {.vias = {{{}, ways[0], {}, 0, 1}}, .backupVias = {{{}, ways[1], {}, 0, 1}}});
         }
      }
      this->inputs.tunnelFib = setUp;
      this->inputs.ldpTunnelTable = ldp;
      this->inputs.evpnVxlanTunnelTable = vxlan;
   }
   template <class Writer, class Table>
   void makeFecs(std::size_t at, Zam::Ptr<Table const>& table) {
      auto const path = dir_ / ("fecs" + std::to_string(at));
      Writer writer(path, {.capacity = 64, .arenaCapacity = 4096});
      for (FecId const fecId : fecIds_) {
         Vault::Fib::Fec fec{fecId, static_cast<U16>(below(4)), {}};
         std::generate_n(std::back_inserter(fec.vias), below(5), [this] { return someVia(); });
         if (!oneIn(4) && std::ranges::count(this->fecs[at], fecId, &Vault::Fib::Fec::fecId) == 0) {
            writer.fecIs({fec.fecId, fec.primaryVias, fec.vias});
            this->fecs[at].push_back(fec);
         }
      }
      table = Zam::makePtr<Table>(path);
   }
   // The same ids have other vias in other tables.
   void makeFecs() {
      makeFecs<Vault::Fib::ForwardingStatusWriter>(0, this->inputs.forwardingStatus);
      makeFecs<Vault::Fib6::ForwardingStatusWriter>(1, this->inputs.forwarding6Status);
      if (oneIn(3)) {
         makeFecs<Vault::FibGen::ForwardingStatusWriter>(2, this->inputs.forwardingGenStatus);
      }
   }
   void makeRoutes(U32 count) {
      std::set<FecId> used;
      typename Family::RouteWriter writer(dir_ / "routes", {.capacity = count, .arenaCapacity = 0});
      while (writer.routes() < count) {
         typename Family::Route route;
         route.prefix = prefixOf<Prefix>(someBits());
         route.routeType = oneIn(2) ? static_cast<RouteType>(below(50))
                                    : oneOf<RouteType>({RouteType::receive, RouteType::staticConfig, Family::ospf,
                                                        RouteType::martian, RouteType::nexthopGroup});
         route.preference = static_cast<U8>(below(256));
         route.metric = below(0x7fffffff);
         route.srcVrfId = oneIn(4) ? oneOf<U32>({7, 8}) : Vrf::VrfIdMap::noVrf;
         route.fecId = oneIn(8) ? oneOf<FecId>({FecId(), FecId::of(2, 99)}) : oneOf(fecIds_);
         if (!sharesFecs_ && !used.insert(route.fecId).second) {
            route.fecId = {};
         }
         writer.routeIs(route);
      }
      this->inputs.routingStatus = Zam::makePtr<typename Family::RouteStatus>(dir_ / "routes");
      this->inputs.routingStatus->walk(
          [this](auto const& route) { this->routes.emplace_back(bitsOf(route.prefix), route); });
   }
   // Addresses that are a route's own prefix, or lie in it.
   typename Family::AddrWithMask someAddress() {
      auto const prefix = oneOf(this->routes).second.prefix;
      if (prefix.length() == 0) {  // that is no address
         return {prefixOf<Prefix>(hostBits()).address(), 0};
      }
      bool const isInside = prefix.length() < Prefix::maxLength && oneIn(2);
      return {isInside ? Family::withLowBits(prefix.address(), 1) : prefix.address(), prefix.length()};
   }
   void makeInterfaces() {
      auto const status = Zam::makePtr<typename Family::IpStatus>();
      auto const neighbours = Zam::makePtr<Routing::AttachedRouteStatus>();
      for (U32 i = 0; i < 10; ++i) {
         typename Family::IpStatus::IntfStatus intf;
         intf.vrfId = oneOf<U32>({Box<Family>::vrfId, Box<Family>::vrfId, 8, Vrf::VrfIdMap::noVrf});
         intf.vrfName = intf.vrfId == 8 ? "red" : "default";
         intf.loopback = oneIn(2);
         intf.primaryAddr = oneIn(4) ? intf.primaryAddr : someAddress();
         intf.secondaryAddr.assign(below(3), someAddress());
         auto const intfId = IntfId::named("Ethernet" + std::to_string(i));
         status->intfStatusIs(intfId, intf);
         neighbours->routeIs({{}, intfId, prefixOf<Prefix>(hostBits()).address()},
                             {{}, oneOf<U32>({Box<Family>::vrfId, Box<Family>::vrfId, 8}), !oneIn(4)});
      }
      this->inputs.ipStatus = status;
      this->inputs.attachedRouteStatus = neighbours;
   }
   void makeRouteCache() {
      auto const cache = Zam::makePtr<Routing::Rib::RouteConfig>();
      for (U32 i = 0; i < 10; ++i) {
         Routing::Rib::RouteConfigEntry entry;
         entry.routeType = static_cast<Routing::RouteType>(below(5));
         entry.preference = static_cast<U8>(i);
         entry.metric = i * 100;
         entry.fecId = oneIn(2) ? 0 : oneOf(fecIds_).value();
         entry.vias.resize(below(3));
         for (auto& via : entry.vias) {
            via.hop = someHop();
            via.intfId = oneIn(3) ? IntfId() : IntfId::named("Ethernet1");
         }
         auto const foreign = Lumen::IpGenPrefix::parse(Prefix::maxLength == 32 ? "::/0" : "0.0.0.0/0");
         cache->routeIs({{}, oneIn(8) ? foreign : somePrefix(), oneIn(4) ? 8 : Box<Family>::vrfId}, entry);
      }
      this->inputs.routeCacheConfig = !sharesFecs_ || oneIn(4) ? nullptr : cache;
   }

   std::vector<U64> const tunnelIds{U64{8} << 44U | 5, U64{7} << 44U | 5, U64{2} << 44U | 5, U64{9} << 44U | 5};

   testsupport::TempDir dir_;
   Random random_;
   bool isLarge_;
   bool sharesFecs_;  // by several routes
   std::vector<FecId> fecIds_;
};

template <class Family>
class SelectionOracleTest : public ::testing::Test {
 public:
   using Prefix = typename Family::Prefix;

   static std::vector<Shown<Family>> shownBy(typename Family::Sorter const& sorter) {
      std::vector<Shown<Family>> all;
      std::set<FecId> madeUp;
      for (auto const& [prefix, route] : sorter.sortedRoute()) {
         EXPECT_EQ(prefix, route.prefix);
         EXPECT_TRUE(!route.fecId || sorter.fecHas(route.fecId)) << prefix;
         all.push_back({route, {}});
         auto const* const fec = sorter.fecs().record(route.fecId);
         for (auto const& via : fec != nullptr ? fec->vias() : std::span<StoredVia const>()) {
            ShownVia const shown{via.isBackup != 0, sorter.fecs().store().arena().leg(via).intfId, via.hop()};
            if (all.back().vias.empty() || all.back().vias.back() != shown) {
               all.back().vias.push_back(shown);
            }
         }
         if (isMadeUp(route.fecId)) {
            EXPECT_TRUE(madeUp.insert(route.fecId).second) << prefix;
            all.back().route.fecId = FecId::of(4, 0);
         }
      }
      return all;
   }
   void expectAgreement(World<Family> const& world, Request<Family> const& request) {
      auto const& in = request.inputs;
      auto const sorter = Family::sorter(in);
      sorter->handleInitialized();
      SelectionOracle<Family> oracle(world, request);
      auto const expected = oracle.selection();
      EXPECT_EQ(shownBy(*sorter), expected);
      std::set<FecId> cached;
      sorter->fecs().forEach([&](FecRecord const& fec) { cached.insert(isMadeUp(fec.fecId) ? FecId() : fec.fecId); });
      cached.erase(FecId());
      EXPECT_EQ(cached, oracle.cachedFecs());
      EXPECT_TRUE(in.hostRoutes || sorter->selectedRoutes() == expected.size());
      if (!in.hostRoutes && !in.longerPrefixes && !in.prefix.isNullPrefix()) {
         EXPECT_EQ(sorter->longestPrefixMatch(), expected.empty() ? Prefix() : expected.front().route.prefix);
      }
   }
   // Asks so many requests, which `shape(request, number)` completes, in as many worlds of so many routes, until one is
   // answered wrong.
   template <class Shape>
   void ask(U32 worlds, U32 routes, bool sharesFecs, U32 requests, Shape const& shape) {
      for (U32 seed = 1; seed <= worlds; ++seed) {
         RandomWorld<Family> world(seed, routes == RandomWorld<Family>::large ? routes : routes + seed, sharesFecs);
         for (U32 i = 0; i < requests && !HasFailure(); ++i) {
            SCOPED_TRACE("seed " + std::to_string(seed) + ", request " + std::to_string(i));
            auto request = world.someRequest(!sharesFecs);
            shape(world, request.inputs, i);
            expectAgreement(world, request);
         }
      }
      RecordProperty("cases", static_cast<int>(worlds * requests));
   }
};
TYPED_TEST_SUITE(SelectionOracleTest, Families);

TYPED_TEST(SelectionOracleTest, agreesOnEveryRequest) {
   this->ask(60, 1, true, 50, [](auto& world, auto& request, U32 i) {
      request.hostRoutes = i % 10 == 0;
      request.prefix = i % 5 == 0 ? request.prefix : world.somePrefix();
      request.longerPrefixes = world.oneIn(3);
   });
}

// Narrow requests to large tables, in which the routes are looked up instead of walked; and such as are just too wide.
TYPED_TEST(SelectionOracleTest, agreesInsideLongPrefixesOfLargeTables) {
   this->ask(2, RandomWorld<TypeParam>::large, true, 60, [](auto& world, auto& request, U32 i) {
      request.prefix = world.somePrefix().truncated(static_cast<U8>(world.width - i % 10));
      request.longerPrefixes = i % 20 != 0;
   });
}

// What is pruned is gone for every route that shares the FEC, so here none does.
TYPED_TEST(SelectionOracleTest, agreesOnWhatFiltersLeave) {
   this->ask(60, 10, false, 10, [](auto& world, auto& request, U32 i) {
      request.prefix = i % 2 == 0 ? request.prefix : world.somePrefix();
   });
}

}  // namespace

}  // namespace Kiv::Testing
