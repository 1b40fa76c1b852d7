#include "state/Inputs.h"
#include "state/RouteTypeNames.h"
#include "state/Snapshot.h"
#include "state/StateDir.h"
#include "support/Testing.h"

namespace state {
namespace {

namespace fs = std::filesystem;
using Tunnel::IpEncapType;
using Tunnel::IpTunnelEncap;
using Vault::Fib::FecId;

State snapshotOf(std::string text) {
   return parseSnapshot("test.json", std::move(text));
}

// Everything that a snapshot can say, with values that a box would not hold.
State oddSnapshot() {
   std::ifstream file(KIV_SOURCE_DIR "/tests/state/odd.json");
   return snapshotOf({std::istreambuf_iterator<char>(file), {}});
}

class StateDir : public testing::Test {
 protected:
   std::size_t filesBeside() const {
      return static_cast<std::size_t>(std::distance(fs::directory_iterator(place_.parent_path()), {}));
   }

   testsupport::TempDir dir_;
   fs::path const place_ = dir_ / "state";
};

template <class Table>
auto routesOf(Table const& table) {
   std::vector<typename std::decay_t<decltype(*table)>::RouteType> routes;
   table->walk([&](auto const& route) { routes.push_back(route); });
   std::ranges::sort(routes, {}, [](auto const& route) { return route.prefix; });
   return routes;
}

template <class Fecs, class Table>
void expectFecs(Fecs const& fecs, Table const& table) {
   for (auto const& fec : fecs) {
      typename Fecs::value_type read;
      ASSERT_TRUE(table->fec(fec.fecId, read)) << fec.fecId.value();
      EXPECT_EQ(read, fec);
   }
}

void expectTables(State const& state, Inputs& inputs) {
   for (VrfState const& vrf : state.vrfs) {
      auto routes = vrf.routes;
      auto routes6 = vrf.routes6;
      std::ranges::sort(routes, {}, &Vault::Fib::Route::prefix);
      std::ranges::sort(routes6, {}, &Vault::Fib6::Route::prefix);
      EXPECT_EQ(routesOf(inputs.routes(vrf.id)), routes);
      EXPECT_EQ(routesOf(inputs.routes6(vrf.id)), routes6);
      for (UnprogrammedRoute const& route : vrf.hardwareUnprogrammed) {
         EXPECT_TRUE(inputs.unprogrammedRouteStatus->unprogrammed(vrf.id, route.prefix));
      }
      for (UnprogrammedRoute const& route : vrf.kernelUnprogrammed) {
         EXPECT_EQ(inputs.kernelUnprogrammedRoute->error(vrf.id, route.prefix).code, route.error);
      }
   }
   expectFecs(state.fecs, inputs.forwardingStatus);
   expectFecs(state.fecs6, inputs.forwarding6Status);
   expectFecs(state.policyFecs, inputs.policyForwardingStatus);
}

// What a lookup found; it throws when that is nothing.
template <class Found>
auto const& the(Found const& found) {
   if (!found) {
      throw std::runtime_error("looked for in vain");
   }
   return *found;
}

// Of the odd snapshot above.
void expectOddEntities(Inputs const& inputs) {
   constexpr VrfId red = 16777214;
   auto const e1 = Lumen::IntfId::named("e1");
   ASSERT_EQ(inputs.vrfs().size(), 2U);
   EXPECT_EQ(the(inputs.vrf("red")).id, red);
   EXPECT_EQ(inputs.vrf("blue"), nullptr);
   EXPECT_FALSE(the(inputs.vrf("red")).ip.routingConfig->routing());
   EXPECT_TRUE(the(inputs.vrf("red")).ip6.routingConfig->routing());
   auto const& lists = the(inputs.vrf("default"));
   EXPECT_NE(lists.ip.routeList->route({{}, Lumen::IpGenPrefix(Lumen::Prefix::parse("2.0.0.0/8")), 3}), nullptr);
   EXPECT_EQ(lists.ip.routeList->route().size(), 1U);
   EXPECT_NE(lists.ip6.routeList->route({{}, Lumen::IpGenPrefix(Lumen::Ip6Prefix::parse("::/0")), 1}), nullptr);
   EXPECT_EQ(inputs.allIntfConfig->description(e1), "a \"b\"\n");
   EXPECT_EQ(the(inputs.allIntfConfig->intfConfig(e1)).tunnel,
             (IpTunnelEncap{{}, IpEncapType::gre, {}, Lumen::IpGenAddr::parse("::7"), 4294967295U}));
   auto const& ip = the(inputs.ipStatus->intfStatus(e1));
   EXPECT_EQ(ip.primaryAddr.stringValue(), "10.0.0.1/24");
   EXPECT_EQ(ip.secondaryAddr.size(), 1U);
   EXPECT_EQ(ip.vrfId, red);
   EXPECT_EQ(ip.vrfName, L3::VrfName("red"));
   EXPECT_TRUE(ip.loopback);
   EXPECT_EQ(inputs.attachedRouteStatus->route().size(), 1U);
   EXPECT_EQ(inputs.attachedRoute6Status->route().size(), 1U);
   EXPECT_EQ(inputs.routingHardwareStatus->maxVias(), 128U);
   Routing::Rib::RouteConfigKey const key{{}, Lumen::IpGenPrefix::parse("10.9.0.0/16"), red};
   auto const& cached = the(inputs.routeCacheConfig->route(key));
   EXPECT_EQ(cached.preference, 7);
   ASSERT_EQ(inputs.routeCacheEvpnViaConfig->via(cached.fecId).size(), 1U);
   EXPECT_EQ(inputs.routeCacheEvpnViaConfig->via(cached.fecId)[0].localIntf, e1);
   EXPECT_EQ(inputs.secondRouteConfig->route().size(), 1U);
   EXPECT_EQ(the(inputs.secondRouteConfig->route(key)).preference, 8);
}

void expectOddNexthopGroups(Inputs& inputs) {
   using Routing::NexthopGroup::NexthopGroupEntry;
   using Routing::NexthopGroup::NexthopGroupType;
   auto const& ids = *inputs.nexthopGroupEntryStatus;
   auto const& groups = *inputs.nexthopGroupConfig;
   EXPECT_EQ(groups.nexthopGroup().size(), 3U);
   for (auto const& [name, id] : std::map<std::string, U32>{{"g", 4294967295U}, {"full", 9}, {"bare", 0}}) {
      EXPECT_EQ(ids.nexthopGroupNameToId(name), id);
   }
   EXPECT_EQ(ids.entries(), 2U);
   EXPECT_EQ(the(groups.nexthopGroup("g")).type(), NexthopGroupType::invalid);
   EXPECT_EQ(the(groups.nexthopGroup("bare")).type(), NexthopGroupType{255});
   auto const& full = the(groups.nexthopGroup("full"));
   EXPECT_EQ(full.type(), NexthopGroupType::mplsOverUdp);
   EXPECT_EQ(full.entry().size(), 3U);
   EXPECT_EQ(the(full.entry().find(3)), NexthopGroupEntry());
   EXPECT_EQ(the(full.entry().find(4)), NexthopGroupEntry()) << "right after the one before it";
   EXPECT_EQ(the(full.entry().find(4294967295U)), (NexthopGroupEntry{{},
                                                                     Lumen::IpGenAddr::parse("::1"),
                                                                     Lumen::IntfId::named("e1"),
                                                                     Lumen::MplsLabelOperation::parse("push 0 1048575"),
                                                                     Lumen::IpGenAddr::parse("10.0.0.1"),
                                                                     Lumen::IpGenAddr::parse("fe80::1"),
                                                                     4294967295U,
                                                                     65535}));
   EXPECT_EQ(inputs.routingHardwareStatus->maxNexthopGroupSize(), 4294967295U);
   auto const& red = the(inputs.nexthopGroupHardwareStatus->vrfStatus("red"));
   EXPECT_TRUE(red.programmed(9, 3) && red.programmed(9, 4294967295U) && red.programmed(4294967295U));
   EXPECT_FALSE(red.programmed(9, 4) || red.programmed(4294967295U, 0));
   EXPECT_FALSE(the(inputs.nexthopGroupHardwareStatus->vrfStatus("default")).programmed(9));
   auto const& counters = the(inputs.nexthopGroupCounters());
   EXPECT_EQ(counters.getCounters(9, 3), (Kiv::CounterEntry{{}, 18446744073709551613U, 5}));
   EXPECT_EQ(counters.getCounters(4294967295U, 4294967295U), (Kiv::CounterEntry{{}, 0, 7}));
   EXPECT_EQ(counters.counterIndex(9, 3), (Kiv::CounterIndex{{}, 0, {{}, ~U64{0}}}));
   EXPECT_EQ(counters.counterIndex(4294967295U, 4294967295U), (Kiv::CounterIndex{{}, 1, {{}, 1}}));
   EXPECT_EQ(the(counters.snapshotTable()).counters(), 1U) << "the other was never cleared";
}

// Every table holds the tunnel of index 3, and what it leads to tells the type.
template <class TunnelTable>
void expectTunnelTable(TunnelTable const& table) {
   constexpr auto type = TunnelTable::tunnelType;
   auto const& entry = the(table.entry(Tunnel::tunnelIdOf(type, 3)));
   std::string const expected = "10." + std::to_string(static_cast<U32>(type));
   if constexpr (type == Tunnel::TunnelType::evpnVxlan) {
      EXPECT_EQ(entry.vtepAddr.stringValue(), expected + ".0.0");
   } else {
      EXPECT_EQ(entry.endpoint.stringValue(), expected + ".0.0/24");
      EXPECT_EQ(entry.algorithm, type == Tunnel::TunnelType::isisFlexAlgo ? 255 : 0);
   }
   EXPECT_EQ(table.entry().size(), type == Tunnel::TunnelType::nexthopGroup ? 2U : 1U);
}

void expectOddTunnels(Inputs const& inputs) {
   auto const& tunnel = the(inputs.tunnelFib->entry(~U64{0}));
   ASSERT_EQ(tunnel.vias.size(), 1U);
   EXPECT_EQ(tunnel.ipEncap, (IpTunnelEncap{{},
                                            IpEncapType::vxlan,
                                            Lumen::IpGenAddr::parse("10.0.0.1"),
                                            Lumen::IpGenAddr::parse("10.0.0.2"),
                                            16777215,
                                            255,
                                            254}));
   EXPECT_EQ(tunnel.vias[0].hop.stringValue(), "::1");
   EXPECT_EQ(tunnel.vias[0].weight, 65535U);
   EXPECT_EQ(the(inputs.tunnelFib->labelStackEncap(tunnel.vias[0].encapId)).stringValue(), "swap 0 1048575");
   ASSERT_EQ(tunnel.backupVias.size(), 2U);
   EXPECT_EQ(tunnel.backupVias[0].intfId.tunnelId(), Tunnel::tunnelIdOf(Tunnel::TunnelType::ldp, 0));
   EXPECT_EQ(tunnel.backupVias[0].encapId, 404U);
   EXPECT_EQ(tunnel.backupVias[0].weight, 1U);
   EXPECT_EQ(tunnel.backupVias[1].intfId.fecId(), FecId::of(1, 9).value());
   std::apply([](auto const&... table) { (expectTunnelTable(*table), ...); }, inputs.tunnelTables);
   using enum Tunnel::TunnelType;
   EXPECT_EQ(the(inputs.protocolTunnelNameStatus->tunnelName(Tunnel::tunnelIdOf(rsvpLer, 3))),
             Zam::String(std::string("a\0b", 3)));
   EXPECT_EQ(the(inputs.policyStatus->policy({{}, Lumen::IpGenAddr::parse("::9"), 4294967295U})),
             Tunnel::tunnelIdOf(isisSr, 3));
   EXPECT_EQ(inputs.policyStatus->policy().size(), 2U);
   EXPECT_EQ(the(inputs.policyStatus->policyOfTunnel(Tunnel::tunnelIdOf(srTePolicy, 4))).color, 0U);
   using Classes = std::vector<SrTePolicy::CbfClass>;
   EXPECT_EQ(the(inputs.cbfFecOverrideMap->fecOverride(~U64{0})),
             (Classes{{{}, {63, 0}, FecId::of(20, 1).value()}, {{}, {1}, FecId::of(0, 1).value()}}));
   EXPECT_EQ(inputs.cbfFecOverrideMap->fecOverride().size(), 2U);
   EXPECT_EQ(the(inputs.flexAlgoConfig->algorithmName(255)), "high");
}

TEST_F(StateDir, HoldsWhatTheSnapshotSays) {
   State const snapshot = oddSnapshot();
   ASSERT_EQ(snapshot.vrfs.front().routes.size(), 6U);
   writeStateDir(snapshot, place_.string());
   Inputs loaded = mountStateDir(place_.string());
   expectTables(snapshot, loaded);
   expectOddEntities(loaded);
   expectOddTunnels(loaded);
   expectOddNexthopGroups(loaded);
   EXPECT_EQ(filesBeside(), 1U);

   // The same without a directory; nothing of it is left behind.
   Inputs inPrivate = mountPrivately(snapshot);
   expectTables(snapshot, inPrivate);
   expectOddEntities(inPrivate);
   expectOddTunnels(inPrivate);
   expectOddNexthopGroups(inPrivate);
   EXPECT_FALSE(fs::exists(fs::path(inPrivate.forwardingStatus->path())));
}

TEST_F(StateDir, SharesOneFecAmongEqualViaListsOfAFamily) {
   State const state = oddSnapshot();
   auto const& routes = state.vrfs.front().routes;
   EXPECT_EQ(routes[0].fecId, routes[1].fecId);
   EXPECT_NE(routes[0].fecId, routes[2].fecId);
   EXPECT_FALSE(routes[3].fecId);
   EXPECT_EQ(routes[4].fecId.value(), ~U64{0});
   auto const& routes6 = state.vrfs.back().routes6;
   EXPECT_EQ(routes6[1].fecId.adjType(), 1);  // the same list in the other family is another FEC
   EXPECT_EQ(state.fecs.size(), 3U);
   EXPECT_EQ(state.fecs6.size(), 3U);
   // Ids of vias without a name do not run into those that have one.
   auto const generic = snapshotOf(R"({"genericFib": true, "fecs": {"ipv4:1": []}, "vrfs": {"default": {
      "ipv6Routes": [{"prefix": "::/0", "type": "bgp", "vias": []}],
      "ipv4Routes": [{"prefix": "0.0.0.0/0", "type": "kernel", "vias": []}]}}})");
   ASSERT_EQ(generic.fecsGen.size(), 3U);
   EXPECT_NE(generic.fecsGen[0].fecId, generic.fecsGen[2].fecId);
}

TEST_F(StateDir, IsReplacedAsAWhole) {
   writeStateDir(oddSnapshot(), place_.string());
   Inputs before = mountStateDir(place_.string());
   auto const earlier = before.routes(0);
   writeStateDir(snapshotOf("{}"), place_.string() + "/");
   EXPECT_EQ(filesBeside(), 1U);
   EXPECT_EQ(mountStateDir(place_.string()).vrfs().size(), 1U);
   EXPECT_FALSE(fs::exists(place_ / "fib/route/16777214"));
   EXPECT_EQ(routesOf(earlier).size(), 6U);  // whoever had it mounted still has it
}

TEST_F(StateDir, FollowsALinkToItsPlace) {
   fs::create_directory(place_);
   fs::path const link = place_.parent_path() / "link";
   fs::create_directory_symlink("state", link);
   writeStateDir(snapshotOf("{}"), link.string());
   EXPECT_TRUE(fs::is_symlink(link));
   EXPECT_TRUE(fs::exists(place_ / "hive.json"));
}

TEST_F(StateDir, IsNotMadeWhereSomethingElseIs) {
   fs::create_directory(place_);
   std::ofstream(place_ / "mine") << "text";
   EXPECT_THROW(writeStateDir(snapshotOf("{}"), place_.string()), Hive::StateError);
   EXPECT_THROW(writeStateDir(snapshotOf("{}"), (place_ / "mine").string()), Hive::StateError);
   EXPECT_THROW(writeStateDir(snapshotOf("{}"), (place_ / "mine" / "below").string()), Hive::StateError);
   EXPECT_THROW(writeStateDir(snapshotOf("{}"), ""), Hive::StateError);
   EXPECT_TRUE(fs::exists(place_ / "mine"));
   EXPECT_EQ(filesBeside(), 1U);
   EXPECT_EQ(std::distance(fs::directory_iterator(place_), {}), 1);
}

TEST_F(StateDir, StaysAsItWasWhenWritingFails) {
   writeStateDir(snapshotOf("{}"), place_.string());
   State impossible;
   impossible.vrfs.emplace_back().routes.emplace_back();  // the null prefix, which no table takes
   EXPECT_THROW(writeStateDir(impossible, place_.string()), Zam::RangeError);
   EXPECT_THROW(mountPrivately(impossible), Zam::RangeError);
   EXPECT_EQ(filesBeside(), 1U);
   EXPECT_EQ(mountStateDir(place_.string()).vrfs().size(), 1U);
}

TEST_F(StateDir, WithoutItsEntitiesIsRefused) {
   writeStateDir(snapshotOf("{}"), place_.string());
   fs::remove(place_ / entitiesFile);
   EXPECT_THROW(mountStateDir(place_.string()), JsonError);
}

template <class RouteType>
void expectNames(U8 highest) {
   for (U32 number = 0; number <= highest; ++number) {
      auto const type = static_cast<RouteType>(number);
      std::string_view const name = routeTypeName(type);
      EXPECT_FALSE(name.empty()) << number;
      EXPECT_EQ(routeTypeOf<RouteType>(name), type) << name;
   }
   EXPECT_EQ(routeTypeName(static_cast<RouteType>(highest + 1)), "");
}

TEST(RouteTypeNames, ReadBackAsTheirTypes) {
   expectNames<Routing::Fib::RouteType>(44);
   expectNames<Routing6::Fib::RouteType>(31);
}

}  // namespace
}  // namespace state
