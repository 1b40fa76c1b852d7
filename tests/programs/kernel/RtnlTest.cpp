#include "programs/kernel/KernelState.h"
#include "programs/kernel/RtnlMessages.h"
#include "state/Inputs.h"
#include "tests/programs/kernel/DumpBuilder.h"
#include "tests/programs/kernel/RouteLines.h"

#include <arpa/inet.h>
#include <endian.h>
#include <linux/if_addr.h>
#include <linux/if_tunnel.h>
#include <linux/lwtunnel.h>
#include <linux/mpls_iptunnel.h>
#include <linux/nexthop.h>
#include <linux/rtnetlink.h>
#include <cerrno>

namespace kernelTest {

using kernel::RtnlError;
using Lumen::AddressFamily;

namespace {

rtmsg routeHeader(U8 family = AF_INET, U8 length = 8) {
   rtmsg header{};
   header.rtm_family = family;
   header.rtm_dst_len = length;
   header.rtm_table = RT_TABLE_MAIN;
   header.rtm_protocol = RTPROT_STATIC;
   header.rtm_type = RTN_UNICAST;
   return header;
}

Attributes tenSlashEight() {
   return Attributes().add(RTA_DST, htonl(0x0a000000));
}

// An encapsulation of next hops, as a route or one of its next hops has it.
Attributes& addEncap(Attributes& route, U16 type, Attributes const& encap) {
   return route.add(RTA_ENCAP_TYPE, type).add(RTA_ENCAP | NLA_F_NESTED, encap);
}

Attributes mpls(std::initializer_list<U32> labels) {
   ByteVector stack;
   for (U32 const label : labels) {
      appendValue(stack, htonl(label << 12 | 0xfff));
   }
   return Attributes().addBytes(MPLS_IPTUNNEL_DST, stack);
}

Attributes ipHeader(U64 id) {
   return Attributes().add(LWTUNNEL_IP_ID, htobe64(id)).add(LWTUNNEL_IP_DST, htonl(0x0a000009));
}

Attributes encapsulated(U16 type, Attributes const& encap) {
   Attributes route = tenSlashEight().add(RTA_OIF, U32{1}).add(RTA_GATEWAY, htonl(0x0a000002));
   return addEncap(route, type, encap);
}

// A machine of which one dump tells something.
kernel::Model modelOf(ByteVector kernel::Dumps::*part, ByteVector dump) {
   ByteVector const nothing = DumpBuilder().done();
   kernel::Dumps dumps{nothing, nothing, {}, nothing, nothing};
   dumps.*part = std::move(dump);
   return kernel::Model(dumps);
}

std::vector<kernel::KernelRoute> routesOf(Attributes const& attributes) {
   auto const model =
       modelOf(&kernel::Dumps::routes4, DumpBuilder().add(RTM_NEWROUTE, routeHeader(), attributes).done());
   auto const& routes = model.routes(AddressFamily::ipv4);
   return {routes.begin(), routes.end()};
}

// All the ways in which a State may rely on what it was made from.
void expectSound(state::State const& state) {
   std::set<Lumen::IntfId> interfaces;
   std::set<Vault::Fib::FecId> fecs;
   std::set<state::VrfId> vrfs;
   for (auto const& interface : state.interfaces) {
      EXPECT_TRUE(interfaces.insert(interface.intfId).second);
   }
   std::set<U64> labelStacks{0};
   for (auto const& stack : state.labelStacks) {
      EXPECT_TRUE(labelStacks.insert(stack.id).second);
   }
   std::set<Tunnel::TunnelId> tunnels{0};
   for (auto const& [tunnelId, tunnel] : state.tunnels) {
      EXPECT_TRUE(tunnels.insert(tunnelId).second);
      EXPECT_NE(tunnel.vias.at(0).encapId != 0, bool(tunnel.ipEncap));
      EXPECT_TRUE(labelStacks.contains(tunnel.vias.at(0).encapId));
      EXPECT_NE(bool(tunnel.ipEncap), tunnel.ipEncap.destination.isZero());
   }
   auto const collect = [&](auto const& all) {
      for (auto const& fec : all) {
         EXPECT_TRUE(fecs.insert(fec.fecId).second);
         for (auto const& via : fec.vias) {
            EXPECT_TRUE(interfaces.contains(via.intfId));
            EXPECT_GE(via.weight.raw(), 1);
            EXPECT_TRUE(tunnels.contains(via.tunnelId));
         }
      }
   };
   collect(state.fecs);
   collect(state.fecs6);
   auto const check = [&](auto const& routes) {
      std::set<std::string> prefixes;
      for (auto const& route : routes) {
         EXPECT_TRUE(prefixes.insert(route.prefix.stringValue()).second) << route.prefix.stringValue();
         EXPECT_TRUE(fecs.contains(route.fecId));
      }
   };
   for (auto const& vrf : state.vrfs) {
      EXPECT_TRUE(vrfs.insert(vrf.id).second);
      check(vrf.routes);
      check(vrf.routes6);
   }
   for (auto const& interface : state.interfaces) {
      EXPECT_TRUE(vrfs.contains(interface.vrfId));
   }
}

}  // namespace

TEST(RtnlRefusal, ofWhatTheKernelReports) {
   ByteVector const error = DumpBuilder().add(NLMSG_ERROR, nlmsgerr{-EPERM, {}}).bytes();
   EXPECT_EQ(testsupport::complaintOf<RtnlError>([&] { modelOf(&kernel::Dumps::links, error); }),
             "rtnetlink: the kernel answers: Operation not permitted");
   EXPECT_EQ(testsupport::complaintOf<RtnlError>([&] { modelOf(&kernel::Dumps::links, DumpBuilder().done(-ENOBUFS)); }),
             "rtnetlink: the kernel answers: No buffer space available");
   ByteVector const interrupted =
       DumpBuilder().add(RTM_NEWROUTE, routeHeader(), tenSlashEight(), NLM_F_DUMP_INTR).done();
   EXPECT_THROW(modelOf(&kernel::Dumps::routes4, interrupted), kernel::DumpInterrupted);

   auto const errorState = kernel::inspectDatagram(error);
   EXPECT_TRUE(errorState.last && errorState.error == EPERM && !errorState.interrupted);
   auto const interruptedState = kernel::inspectDatagram(interrupted);
   EXPECT_TRUE(interruptedState.last && interruptedState.error == 0 && interruptedState.interrupted);
   EXPECT_FALSE(kernel::inspectDatagram(DumpBuilder().add(RTM_NEWROUTE, routeHeader()).bytes()).last);
}

TEST(RtnlRefusal, ofImproperAttributes) {
   using Hop = rtnexthop;
   struct Case {
      char const* what;
      Attributes attributes;
   };
   ByteVector shortHop;
   appendValue(shortHop, Hop{7, 0, 0, 1});
   ByteVector longHop;
   appendValue(longHop, Hop{9, 0, 0, 1});
   for (auto const& [what, attributes] : {
            Case{"destination of another family", Attributes().add(RTA_DST, std::array<U8, 16>{})},
            Case{"no destination", Attributes()},
            Case{"host bits", Attributes().add(RTA_DST, htonl(0x0a000001))},
            Case{"metric of two bytes", tenSlashEight().add(RTA_PRIORITY, U16{1})},
            Case{"empty link", tenSlashEight().addBytes(RTA_OIF, {})},
            Case{"next hop shorter than its header", tenSlashEight().addBytes(RTA_MULTIPATH, shortHop)},
            Case{"next hop longer than the list", tenSlashEight().addBytes(RTA_MULTIPATH, longHop)},
            Case{"via of no family", tenSlashEight().add(RTA_OIF, 1).add(RTA_VIA, U16{0})},
            Case{"via without its address", tenSlashEight().add(RTA_OIF, 1).add(RTA_VIA, U16{AF_INET6})},
            Case{"half a label", encapsulated(LWTUNNEL_ENCAP_MPLS, mpls({1}).add(MPLS_IPTUNNEL_DST, U16{1}))},
            Case{"tunnel id of four bytes", encapsulated(LWTUNNEL_ENCAP_IP, Attributes().add(LWTUNNEL_IP_ID, U32{1}))},
            Case{"tunnel end of two bytes", encapsulated(LWTUNNEL_ENCAP_IP6, ipHeader(1).add(LWTUNNEL_IP_SRC, U16{1}))},
        }) {
      EXPECT_THROW(routesOf(attributes), RtnlError) << what;
   }
   using D = kernel::Dumps;
   Attributes const longName = Attributes().add(IFLA_IFNAME, "sixteenbyteslong");
   Attributes const heavy = Attributes().add(NHA_GROUP, nexthop_grp{1, 0xff, 0xff, 0});
   for (auto const& [part, dump] : {
            std::pair{&D::routes4, DumpBuilder().add(RTM_NEWROUTE, routeHeader(AF_INET, 33), tenSlashEight())},
            {&D::links, DumpBuilder().add(RTM_NEWLINK, ifinfomsg{})},
            {&D::links, DumpBuilder().add(RTM_NEWLINK, ifinfomsg{}, longName)},
            {&D::nextHops, DumpBuilder().add(RTM_NEWNEXTHOP, nhmsg{}, heavy)},
        }) {
      EXPECT_THROW(modelOf(part, DumpBuilder(dump).done()), RtnlError);
   }
}

TEST(RtnlRoutes, skipWhatIsUnknownAndReadTheRest) {
   auto const routes = routesOf(
       tenSlashEight().add(999, U64{1}).add(RTA_TABLE, U32{70000}).add(RTA_PRIORITY, ~U32{0}).add(RTA_OIF, U32{4}));
   ASSERT_EQ(routes.size(), 1U);
   EXPECT_EQ(routes[0].table, 70000U);
   EXPECT_EQ(routes[0].metric, ~U32{0});
   ASSERT_EQ(routes[0].hops.size(), 1U);
   EXPECT_TRUE(routes[0].hops[0].gateway.isEmpty());

   // A kernel without IPv6 answers with its IPv4 routes when it is asked for the IPv6 ones.
   ByteVector const ip4 = DumpBuilder().add(RTM_NEWROUTE, routeHeader(), tenSlashEight()).done();
   auto const model = modelOf(&kernel::Dumps::routes6, ip4);
   EXPECT_EQ(model.routes(AddressFamily::ipv6).begin(), model.routes(AddressFamily::ipv6).end());
   EXPECT_EQ(model.routes(AddressFamily::ipv4).begin(), model.routes(AddressFamily::ipv4).end());
}

TEST(RtnlNextHops, readWeightsBeyondAByte) {
   Attributes const group = Attributes().add(NHA_ID, U32{9}).add(NHA_GROUP, nexthop_grp{1, 0x2b, 1, 0});
   auto const model = modelOf(&kernel::Dumps::nextHops, DumpBuilder().add(RTM_NEWNEXTHOP, nhmsg{}, group).done());
   EXPECT_EQ(model.nextHops().at(9).group.at(0).weight, 300);
}

// A machine of the links "eth0" (1, with 10.0.0.1/8), a VRF device (2) and its member (3).
class BuiltMachine : public testing::Test {
 protected:
   BuiltMachine() {
      link(1, "eth0", {});
      addresses_.add(RTM_NEWADDR, ifaddrmsg{AF_INET, 8, 0, RT_SCOPE_UNIVERSE, 1},
                     Attributes().add(IFA_LOCAL, htonl(0x0a000001)));
   }

   void link(int index, char const* name, Attributes attributes) {
      ifinfomsg header{};
      header.ifi_index = index;
      links_.add(RTM_NEWLINK, header, attributes.add(IFLA_IFNAME, name));
   }
   void device(int index, char const* name, char const* kind, Attributes const& data) {
      Attributes const info = Attributes().add(IFLA_INFO_KIND, kind).add(IFLA_INFO_DATA, data);
      link(index, name, Attributes().add(IFLA_LINKINFO, info));
   }
   void vrf(int index, char const* name, U32 table) {
      device(index, name, "vrf", Attributes().add(IFLA_VRF_TABLE, table));
   }
   void route(rtmsg const& header, Attributes const& attributes) { routes_.add(RTM_NEWROUTE, header, attributes); }

   state::State state() {
      state::State const state = kernel::stateFrom(
          kernel::Model({links_.done(), addresses_.done(), nextHops_.done(), routes_.done(), DumpBuilder().done()}));
      expectSound(state);
      return state;
   }

   DumpBuilder links_;
   DumpBuilder addresses_;
   DumpBuilder nextHops_;
   DumpBuilder routes_;
};

TEST_F(BuiltMachine, namesEveryVrfOnce) {
   vrf(2, "default", 10);
   vrf(3, "red", 20);
   vrf(4, "again", 20);
   vrf(5, "main", RT_TABLE_MAIN);
   vrf(6, "none", Vrf::VrfIdMap::noVrf);
   link(7, "member", Attributes().add(IFLA_MASTER, U32{4}));
   link(8, "ctl\x01", Attributes().add(IFLA_MASTER, U32{1}));
   EXPECT_EQ(interfaceLines(state()),
             (Lines{"eth0 vrf default 10.0.0.1/8", "default vrf default-10 loopback", "red vrf red loopback",
                    "again vrf red loopback", "main vrf default loopback", "none vrf default loopback",
                    "member vrf red", "if8 vrf default"}));
   link(9, "eth0", {});
   EXPECT_THROW(state(), RtnlError);
}

TEST_F(BuiltMachine, holdsTheRouteThatTheKernelUses) {
   rtmsg dead = routeHeader(AF_INET, 0);
   dead.rtm_flags = RTNH_F_DEAD;
   route(dead, Attributes().add(RTA_OIF, U32{1}).add(RTA_PRIORITY, U32{1}));
   route(dead, Attributes().add(RTA_OIF, U32{1}).add(RTA_PRIORITY, U32{2}));
   EXPECT_EQ(routeLines(state()), Lines{});
   EXPECT_EQ(state().vrfs[0].staticRoutes.ip->route().size(), 1U);  // configured, but not reachable

   route(routeHeader(AF_INET, 0), Attributes().add(RTA_OIF, U32{77}));  // through a link that is gone
   route(routeHeader(AF_INET, 0),
         Attributes().add(RTA_OIF, U32{1}).add(RTA_PRIORITY, U32{9}).add(RTA_GATEWAY, htonl(0x0a000002)));
   EXPECT_EQ(routeLines(state()), Lines{"default 0.0.0.0/0 type 7 [1/9] via 10.0.0.2 eth0 weight 1"});
}

// In whatever order the kernel tells them.
TEST_F(BuiltMachine, prefersLocalThenPlainRoutesThenTheLowestMetric) {
   rtmsg forTos = routeHeader();
   forTos.rtm_tos = 16;
   route(forTos, tenSlashEight().add(RTA_OIF, U32{1}).add(RTA_GATEWAY, htonl(0x0a000002)));
   for (U32 const metric : {30, 10, 20}) {
      route(
          routeHeader(),
          tenSlashEight().add(RTA_PRIORITY, metric).add(RTA_OIF, U32{1}).add(RTA_GATEWAY, htonl(0x0a000000 + metric)));
   }
   rtmsg local = routeHeader(AF_INET, 10);
   route(local, tenSlashEight().add(RTA_OIF, U32{1}));
   local.rtm_table = RT_TABLE_LOCAL;
   local.rtm_type = RTN_LOCAL;
   route(local, tenSlashEight().add(RTA_OIF, U32{1}).add(RTA_PRIORITY, U32{5}));
   nextHops_.add(RTM_NEWNEXTHOP, nhmsg{}, Attributes().add(NHA_ID, U32{1}).addBytes(NHA_BLACKHOLE, {}));
   nextHops_.add(RTM_NEWNEXTHOP, nhmsg{}, Attributes().add(NHA_ID, U32{2}).add(NHA_GROUP, nexthop_grp{1, 0, 0, 0}));
   route(routeHeader(AF_INET, 9), tenSlashEight().add(RTA_NH_ID, U32{2}));
   EXPECT_EQ(routeLines(state()),
             (Lines{"default 10.0.0.0/8 type 7 [1/10] via 10.0.0.10 eth0 weight 1", "default 10.0.0.0/9 type 29 [1/0]",
                    "default 10.0.0.0/10 type 1 [0/5] via  eth0 weight 1"}));
}

TEST_F(BuiltMachine, callsTheSubnetOfAnAddressConnectedWhoeverRoutesIt) {
   rtmsg byDhcp = routeHeader();
   byDhcp.rtm_protocol = RTPROT_DHCP;
   byDhcp.rtm_flags = RTM_F_OFFLOAD_FAILED;
   route(byDhcp, tenSlashEight().add(RTA_OIF, U32{1}).add(RTA_PRIORITY, U32{100}));
   byDhcp.rtm_dst_len = 9;
   route(byDhcp, tenSlashEight().add(RTA_OIF, U32{1}));
   EXPECT_EQ(routeLines(state()), (Lines{"default 10.0.0.0/8 type 11 [0/100] via  eth0 weight 1",
                                         "default 10.0.0.0/9 type 35 [254/0] via  eth0 weight 1"}));
   EXPECT_EQ(state().vrfs[0].hardwareUnprogrammed.size(), 2U);
}

TEST_F(BuiltMachine, putsEncapsulationsIntoTunnels) {
   std::string const plain = " type 7 [1/0] via 10.0.0.2 eth0 weight 1";
   U8 length = 8;
   Lines expected;
   for (auto const& [type, encap, text] : std::initializer_list<std::tuple<U16, Attributes, char const*>>{
            {LWTUNNEL_ENCAP_MPLS, mpls({3}), " label 3"},
            {LWTUNNEL_ENCAP_MPLS, mpls({1048575, 0, 16}), " push 1048575 0 16"},
            {LWTUNNEL_ENCAP_MPLS, mpls({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17}), ""},
            {LWTUNNEL_ENCAP_MPLS, mpls({}), ""},
            {LWTUNNEL_ENCAP_IP, ipHeader(0), " ipInIp  > 10.0.0.9 key 0 ttl 0 tos 0"},
            {LWTUNNEL_ENCAP_IP, ipHeader(0xffffff).add(LWTUNNEL_IP_TTL, U8{255}).add(LWTUNNEL_IP_TOS, U8{1}),
             " ipInIp  > 10.0.0.9 key 16777215 ttl 255 tos 1"},
            {LWTUNNEL_ENCAP_IP, ipHeader(0x100000000), ""},
            {LWTUNNEL_ENCAP_IP, Attributes().add(LWTUNNEL_IP_DST, U32{0}), ""},
            {LWTUNNEL_ENCAP_SEG6, mpls({1, 2}), ""},
        }) {
      route(routeHeader(AF_INET, length), encapsulated(type, encap));
      expected.insert("default 10.0.0.0/" + std::to_string(length++) + plain + text);
   }
   EXPECT_EQ(routeLines(state()), expected);
}

TEST_F(BuiltMachine, takesAsManyNextHopsAsAFecHasAndAloneOneHasNothingToShare) {
   ByteVector hops;
   for (U32 number = 0; number < 700; ++number) {
      Attributes const hop = Attributes().add(RTA_GATEWAY, htonl(0x0a000002 + number));
      appendValue(hops, rtnexthop{static_cast<U16>(sizeof(rtnexthop) + hop.bytes().size()), 0, 4, 1});
      hops.insert(hops.end(), hop.bytes().begin(), hop.bytes().end());
      if (number == 0) {
         route(routeHeader(AF_INET, 9), tenSlashEight().addBytes(RTA_MULTIPATH, hops));
      }
   }
   route(routeHeader(), tenSlashEight().addBytes(RTA_MULTIPATH, hops));
   state::State const state = this->state();
   ASSERT_EQ(state.fecs.size(), 2U);
   auto const& [alone, all] = std::minmax(state.fecs[0], state.fecs[1],
                                          [](auto const& a, auto const& b) { return a.vias.size() < b.vias.size(); });
   EXPECT_EQ(all.vias.size(), Vault::Fib::maxVias);
   EXPECT_EQ(all.vias.back().weight.raw(), 5U);
   EXPECT_EQ(alone.vias.at(0).weight.raw(), 1U);
   EXPECT_NO_THROW(state::mountPrivately(state));
}

// Whatever its share of the traffic, and in either family.
TEST_F(BuiltMachine, hasOneTunnelForEqualEncapsulations) {
   ByteVector hops;
   for (U8 const more : {U8{1}, U8{0}}) {
      Attributes hop = Attributes().add(RTA_GATEWAY, htonl(0x0a000003 - more));
      addEncap(hop, LWTUNNEL_ENCAP_MPLS, mpls({7, 8}));
      appendValue(hops, rtnexthop{static_cast<U16>(sizeof(rtnexthop) + hop.bytes().size()), 0, more, 1});
      hops.insert(hops.end(), hop.bytes().begin(), hop.bytes().end());
   }
   route(routeHeader(), tenSlashEight().addBytes(RTA_MULTIPATH, hops));
   route(routeHeader(AF_INET, 9), encapsulated(LWTUNNEL_ENCAP_MPLS, mpls({7, 8})));
   device(2, "gre1", "gre", {});  // whose routes tell the other end
   Attributes overGre = tenSlashEight().add(RTA_OIF, U32{2});
   route(routeHeader(AF_INET, 10), addEncap(overGre, LWTUNNEL_ENCAP_IP, ipHeader(5)));
   state::State const state = this->state();
   EXPECT_EQ(routeLines(state),
             (Lines{"default 10.0.0.0/8 type 7 [1/0] via 10.0.0.2 eth0 weight 2 push 7 8 via "
                    "10.0.0.3 eth0 weight 1 push 7 8",
                    "default 10.0.0.0/9 type 7 [1/0] via 10.0.0.2 eth0 weight 1 push 7 8",
                    "default 10.0.0.0/10 type 7 [1/0] via 10.0.0.9 gre1 weight 1 gre  > 10.0.0.9 key 5 "
                    "ttl 0 tos 0"}));
   ASSERT_EQ(state.tunnels.size(), 3U);
   EXPECT_EQ(state.tunnels[0].tunnelId, Tunnel::tunnelIdOf(Tunnel::TunnelType::staticTunnel, 1));
   EXPECT_EQ(state.labelStacks.size(), 1U);
}

TEST_F(BuiltMachine, tellsWhatTunnelDevicesPutInFront) {
   std::array<U8, 16> const six{0x20, 1};
   U32 const four = htonl(0x0a000009);
   using A = Attributes;
   int index = 1;
   Lines expected{"eth0 vrf default 10.0.0.1/8"};
   for (auto const& [kind, data, text] : std::initializer_list<std::tuple<char const*, Attributes, char const*>>{
            {"gre", A().add(IFLA_GRE_REMOTE, four).add(IFLA_GRE_OKEY, htonl(7)).add(IFLA_GRE_TTL, U8{64}),
             " tunnel gre  > 10.0.0.9 key 7 ttl 64 tos 0"},
            {"ip6gre", A().add(IFLA_GRE_REMOTE, six).add(IFLA_GRE_LOCAL, std::array<U8, 16>{}),
             " tunnel gre  > 2001:: key 0 ttl 0 tos 0"},
            {"sit", A().add(IFLA_IPTUN_UNSPEC, U8{1}).add(IFLA_IPTUN_LOCAL, four).add(IFLA_IPTUN_REMOTE, four),
             " tunnel ipInIp 10.0.0.9 > 10.0.0.9 key 0 ttl 0 tos 0"},
            {"ip6tnl", A().add(IFLA_IPTUN_REMOTE, six).add(IFLA_IPTUN_TOS, U8{1}),  // the packet's own
             " tunnel ipInIp  > 2001:: key 0 ttl 0 tos 0"},
            {"vxlan", A().add(IFLA_VXLAN_ID, U32{9}).add(IFLA_VXLAN_GROUP6, six).add(IFLA_VXLAN_TOS, U8{8}),
             " tunnel vxlan  > 2001:: key 9 ttl 0 tos 8"},
            {"vxlan", A().add(IFLA_VXLAN_ID, U32{9}), ""},
            {"ipip", A().add(IFLA_IPTUN_REMOTE, U32{0}), ""},
            {"geneve", A().add(IFLA_GRE_REMOTE, U8{1}), ""},
        }) {
      std::string const name = "t" + std::to_string(++index);
      device(index, name.c_str(), kind, data);
      expected.insert(name + " vrf default" + text);
   }
   EXPECT_EQ(interfaceLines(state()), expected);
   device(++index, "bad", "gre", A().add(IFLA_GRE_REMOTE, U16{1}));
   EXPECT_THROW(state(), RtnlError);
}

constexpr ByteVector kernel::Dumps::*parts[]{&kernel::Dumps::links, &kernel::Dumps::addresses, &kernel::Dumps::nextHops,
                                             &kernel::Dumps::routes4, &kernel::Dumps::routes6};

TEST(RtnlFuzz, everyCutIsNoticed) {
   kernel::Dumps const dumps = recordedDumps("up");
   for (auto const part : parts) {
      ByteVector const& dump = dumps.*part;
      for (std::size_t size = 1; size < dump.size(); size += dump.size() < 8000 ? 1 : 13) {
         ByteVector const cut(dump.begin(), dump.begin() + static_cast<std::ptrdiff_t>(size));
         EXPECT_THROW(modelOf(part, cut), RtnlError) << size << " of " << dump.size();
      }
   }
}

TEST(RtnlFuzz, changedBytesAreRefusedOrYieldASoundState) {
   std::mt19937 random(20260101);
   kernel::Dumps const whole = recordedDumps("up");
   int accepted = 0;
   constexpr int rounds = 1500;
   for (int round = 0; round < rounds; ++round) {
      kernel::Dumps dumps = whole;
      ByteVector& dump = dumps.*parts[round % std::size(parts)];
      for (U32 flips = 1 + random() % 4; flips > 0; --flips) {
         dump[random() % dump.size()] ^= std::byte(1U << random() % 8);
      }
      try {
         expectSound(kernel::stateFrom(kernel::Model(dumps)));
         ++accepted;
      } catch (RtnlError const&) {
      }
   }
   EXPECT_GT(accepted, rounds / 10);  // most bytes are values, which may be any
   EXPECT_LT(accepted, rounds);
}

}  // namespace kernelTest
