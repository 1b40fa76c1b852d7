#include "programs/state/Inputs.h"
#include "programs/state/RouteTypeNames.h"
#include "programs/state/StateWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace state {
namespace {

namespace fs = std::filesystem;
using Vault::Fib::FecId;

Snapshot snapshotOf(std::string text) {
   return readSnapshot(JsonDocument::parse("test.json", std::move(text)));
}

// Everything that a snapshot can say, with values that a box would not hold.
constexpr char const* odd = R"({
   "vrfs": {
      "red": {"id": 16777214, "ipv4Routing": false,
         "routeCache": [{"prefix": "10.9.0.0/16", "preference": 7, "metric": 9, "fec": "evpn:5"},
                        {"prefix": "fd00::/8", "type": "drop", "vias": [{"nexthop": "::1", "interface": "e1"}]}],
         "secondRouteConfig": [{"prefix": "10.9.0.0/16", "preference": 8}],
         "ipv6Routes": [{"prefix": "::/0", "type": 200, "vias": []},
                        {"prefix": "::/1", "type": "ospf", "metric": 4294967295, "preference": 255, "sourceVrf": "default",
                         "vias": [{"nexthop": "fe80::1", "interface": "e1"}]}]},
      "default": {
         "ipv4Routes": [{"prefix": "0.0.0.0/0", "type": "dhcp", "vias": [{"nexthop": "fe80::1", "interface": "e1"}]},
                        {"prefix": "1.0.0.0/8", "type": 0, "vias": [{"nexthop": "fe80::1", "interface": "e1"}]},
                        {"prefix": "2.0.0.0/8", "type": "drop", "vias": []},
                        {"prefix": "3.0.0.0/8", "type": "kernel"},
                        {"prefix": "255.255.255.255/32", "type": "iBgp", "fec": "255:72057594037927935"}],
         "staticRoutes": [{"prefix": "2.0.0.0/8", "preference": 3}, {"prefix": "::/0"}],
         "attachedRoutes": [{"address": "10.0.0.5", "interface": "e1", "active": false},
                            {"address": "::5", "interface": "e1"}],
         "notInHardware": ["1.0.0.0/8", "::/0"], "notInKernel": [{"prefix": "2.0.0.0/8", "error": 17}]}},
   "interfaces": {"e1": {"vrf": "red", "description": "a \"b\"\n", "ipv4": ["10.0.0.1/24", "10.0.1.1/24"],
                         "ipv6": ["fe80::9/64"], "loopback": true}},
   "nexthopGroups": {"g": 4294967295},
   "fecs": {"255:72057594037927935": [
      {"nexthop": "10.0.0.2", "interface": "e1", "weight": 0, "label": 4294967295},
      {"fec": "ipv6:9", "action": 255, "forwardingVrf": "red", "tunnel": {"type": 9, "index": 1}},
      {"nexthopGroup": "g", "backup": true, "indexedFec": "indexed:3"}], "ipv6:9": []},
   "policyFecs": {"ipv4:1": [{"interface": "e1"}]},
   "evpnFecs": {"evpn:5": [{"vtep": "10.0.0.9", "vni": 5, "routerMac": "00:11:22:33:44:55", "localInterface": "e1"}]},
   "tunnels": [{"tunnel": {"type": 1048575, "index": 17592186044415},
                "vias": [{"nexthop": "::1", "interface": "e1", "labelStack": 18446744073709551615}],
                "backupVias": [{"tunnel": {"type": "ldp", "index": 0}, "labelStack": 404}, {"fec": "ipv6:9"}]}],
   "labelStacks": [{"id": 18446744073709551615, "labels": "swap 0 1048575"}, {"id": 1, "labels": "pop"}],
   "tunnelTables": {
      "static": [{"index": 3, "endpoint": "10.1.0.0/24"}], "ldp": [{"index": 3, "endpoint": "10.2.0.0/24"}],
      "bgpLu": [{"index": 3, "endpoint": "10.3.0.0/24"}], "isisSr": [{"index": 3, "endpoint": "10.4.0.0/24"}],
      "isisFlexAlgo": [{"index": 3, "endpoint": "10.5.0.0/24"}], "rsvpLer": [{"index": 3, "endpoint": "10.6.0.0/24"}],
      "nexthopGroup": [{"index": 3, "endpoint": "10.11.0.0/24"}, {"index": 0, "endpoint": "::/0"}],
      "evpnVxlan": [{"index": 3, "via": {"vtep": "10.9.0.0", "vni": 5, "routerMac": "00:11:22:33:44:55"}}]},
   "tunnelNames": [{"tunnel": {"type": "rsvpLer", "index": 3}, "name": "a\u0000b"}],
   "policies": [{"endpoint": "::9", "color": 4294967295, "tunnel": {"type": "isisSr", "index": 3}},
                {"endpoint": "::9", "color": 0, "tunnel": {"type": "isisSr", "index": 4}}],
   "fecOverrides": [{"fec": "255:72057594037927935", "override": "evpn:5"}],
   "flexAlgorithms": {"low": 128, "high": 255},
   "maxViasIpv4": 128})";

class StateDir : public testing::Test {
 protected:
   void SetUp() override { fs::create_directory(place_.parent_path()); }
   void TearDown() override { fs::remove_all(place_.parent_path()); }

   std::size_t filesBeside() const {
      return static_cast<std::size_t>(std::distance(fs::directory_iterator(place_.parent_path()), {}));
   }

   fs::path place_ = fs::path(testing::TempDir()) / ("kivStateDir" + std::to_string(::getpid())) / "state";
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

// Of the odd snapshot above.
void expectOddEntities(Inputs const& inputs) {
   constexpr VrfId red = 16777214;
   auto const e1 = Lumen::IntfId::named("e1");
   ASSERT_EQ(inputs.vrfs().size(), 2U);
   ASSERT_NE(inputs.vrf("red"), nullptr);
   EXPECT_EQ(inputs.vrf("red")->id, red);
   EXPECT_EQ(inputs.vrf("blue"), nullptr);
   EXPECT_FALSE(inputs.vrf("red")->ip.routingConfig->routing());
   EXPECT_TRUE(inputs.vrf("red")->ip6.routingConfig->routing());
   auto const& lists = *inputs.vrf("default");
   EXPECT_NE(lists.ip.routeList->route({{}, Lumen::IpGenPrefix(Lumen::Prefix::parse("2.0.0.0/8")), 3}), nullptr);
   EXPECT_EQ(lists.ip.routeList->route().size(), 1U);
   EXPECT_NE(lists.ip6.routeList->route({{}, Lumen::IpGenPrefix(Lumen::Ip6Prefix::parse("::/0")), 1}), nullptr);
   EXPECT_EQ(inputs.allIntfConfig->description(e1), "a \"b\"\n");
   auto const* const ip = inputs.ipStatus->intfStatus(e1);
   ASSERT_NE(ip, nullptr);
   EXPECT_EQ(ip->primaryAddr.stringValue(), "10.0.0.1/24");
   EXPECT_EQ(ip->secondaryAddr.size(), 1U);
   EXPECT_EQ(ip->vrfId, red);
   EXPECT_EQ(ip->vrfName, L3::VrfName("red"));
   EXPECT_TRUE(ip->loopback);
   EXPECT_EQ(inputs.attachedRouteStatus->route().size(), 1U);
   EXPECT_EQ(inputs.attachedRoute6Status->route().size(), 1U);
   EXPECT_EQ(inputs.nexthopGroupEntryStatus->nexthopGroupNameToId("g"), 4294967295U);
   EXPECT_EQ(inputs.routingHardwareStatus->maxVias(), 128U);
   auto const* const cached =
       inputs.routeCacheConfig->route({{}, Lumen::IpGenPrefix(Lumen::Prefix::parse("10.9.0.0/16")), red});
   ASSERT_NE(cached, nullptr);
   EXPECT_EQ(cached->preference, 7);
   ASSERT_EQ(inputs.routeCacheEvpnViaConfig->via(cached->fecId).size(), 1U);
   EXPECT_EQ(inputs.routeCacheEvpnViaConfig->via(cached->fecId)[0].localIntf, e1);
}

// Every table holds the tunnel of index 3, and what it leads to tells the type.
template <class TunnelTable>
void expectTunnelTable(TunnelTable const& table) {
   constexpr auto type = TunnelTable::tunnelType;
   auto const* const entry = table.entry(Tunnel::tunnelIdOf(type, 3));
   ASSERT_NE(entry, nullptr) << table.fwkType();
   std::string const expected = "10." + std::to_string(static_cast<U32>(type));
   if constexpr (type == Tunnel::TunnelType::evpnVxlan) {
      EXPECT_EQ(entry->vtepAddr.stringValue(), expected + ".0.0");
   } else {
      EXPECT_EQ(entry->endpoint.stringValue(), expected + ".0.0/24");
   }
   EXPECT_EQ(table.entry().size(), type == Tunnel::TunnelType::nexthopGroup ? 2U : 1U);
}

void expectOddTunnels(Inputs const& inputs) {
   auto const* const tunnel = inputs.tunnelFib->entry(~U64{0});
   ASSERT_NE(tunnel, nullptr);
   ASSERT_EQ(tunnel->vias.size(), 1U);
   EXPECT_EQ(tunnel->vias[0].hop.stringValue(), "::1");
   ASSERT_NE(inputs.tunnelFib->labelStackEncap(tunnel->vias[0].encapId), nullptr);
   EXPECT_EQ(inputs.tunnelFib->labelStackEncap(tunnel->vias[0].encapId)->stringValue(), "swap 0 1048575");
   ASSERT_EQ(tunnel->backupVias.size(), 2U);
   EXPECT_EQ(tunnel->backupVias[0].intfId.tunnelId(), Tunnel::tunnelIdOf(Tunnel::TunnelType::ldp, 0));
   EXPECT_EQ(tunnel->backupVias[0].encapId, 404U);
   EXPECT_EQ(tunnel->backupVias[1].intfId.fecId(), FecId::of(1, 9).value());
   std::apply([](auto const&... table) { (expectTunnelTable(*table), ...); }, inputs.tunnelTables);
   auto const* const name =
       inputs.protocolTunnelNameStatus->tunnelName(Tunnel::tunnelIdOf(Tunnel::TunnelType::rsvpLer, 3));
   ASSERT_NE(name, nullptr);
   EXPECT_EQ(*name, Zam::String(std::string("a\0b", 3)));
   auto const* const policy = inputs.policyStatus->policy({{}, Lumen::IpGenAddr::parse("::9"), 4294967295U});
   ASSERT_NE(policy, nullptr);
   EXPECT_EQ(*policy, Tunnel::tunnelIdOf(Tunnel::TunnelType::isisSr, 3));
   EXPECT_EQ(inputs.policyStatus->policy().size(), 2U);
   ASSERT_NE(inputs.cbfFecOverrideMap->fecOverride(~U64{0}), nullptr);
   EXPECT_EQ(*inputs.cbfFecOverrideMap->fecOverride(~U64{0}), FecId::of(24, 5).value());
   ASSERT_NE(inputs.flexAlgoConfig->algorithmName(255), nullptr);
   EXPECT_EQ(*inputs.flexAlgoConfig->algorithmName(255), "high");
   ASSERT_EQ(inputs.secondRouteConfig->route().size(), 1U);
   auto const* const route =
       inputs.secondRouteConfig->route({{}, Lumen::IpGenPrefix(Lumen::Prefix::parse("10.9.0.0/16")), 16777214});
   ASSERT_NE(route, nullptr);
   EXPECT_EQ(route->preference, 8);
}

TEST_F(StateDir, HoldsWhatTheSnapshotSays) {
   Snapshot const snapshot = snapshotOf(odd);
   ASSERT_EQ(snapshot.state.vrfs.front().routes.size(), 5U);
   writeStateDir(snapshot, place_.string());
   Inputs loaded = mountStateDir(place_.string());
   expectTables(snapshot.state, loaded);
   expectOddEntities(loaded);
   expectOddTunnels(loaded);
   EXPECT_EQ(filesBeside(), 1U);

   // The same without a directory; nothing of it is left behind.
   Inputs inPrivate = mountPrivately(snapshot.state);
   expectTables(snapshot.state, inPrivate);
   expectOddEntities(inPrivate);
   expectOddTunnels(inPrivate);
   EXPECT_FALSE(fs::exists(fs::path(inPrivate.forwardingStatus->path())));
}

TEST_F(StateDir, SharesOneFecAmongEqualViaListsOfAFamily) {
   State const state = snapshotOf(odd).state;
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
      "ipv4Routes": [{"prefix": "0.0.0.0/0", "type": "kernel", "vias": []}]}}})")
                            .state;
   ASSERT_EQ(generic.fecsGen.size(), 3U);
   EXPECT_NE(generic.fecsGen[0].fecId, generic.fecsGen[2].fecId);
}

TEST_F(StateDir, IsReplacedAsAWhole) {
   writeStateDir(snapshotOf(odd), place_.string());
   Inputs before = mountStateDir(place_.string());
   auto const earlier = before.routes(0);
   writeStateDir(snapshotOf("{}"), place_.string() + "/");
   EXPECT_EQ(filesBeside(), 1U);
   EXPECT_EQ(mountStateDir(place_.string()).vrfs().size(), 1U);
   EXPECT_FALSE(fs::exists(place_ / "fib/route/16777214"));
   EXPECT_EQ(routesOf(earlier).size(), 5U);  // whoever had it mounted still has it
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
   EXPECT_THROW(writeStateDir({impossible, "{}"}, place_.string()), Zam::RangeError);
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
