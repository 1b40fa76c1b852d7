#include "programs/kernel/KernelState.h"
#include "tests/Vault/VaultTesting.h"
#include "tests/programs/kernel/RouteLines.h"

#include <linux/rtnetlink.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<int> overruns = 0;  // how many times from here on the socket says that it ran over

}  // namespace

// In the place of the C library's, for the library that reads netlink sockets.
extern "C" [[gnu::visibility("default")]] ssize_t recvmsg(int socket, msghdr* message, int flags) {
   if (overruns.fetch_sub(1) > 0) {
      errno = ENOBUFS;
      return -1;
   }
   return ::syscall(SYS_recvmsg, socket, message, flags);
}

namespace kernelTest {

namespace {

// The commands need nothing but what every kernel with network namespaces has; those that do may fail.
constexpr char const* setUp = R"(set -e
sysctl -qw net.ipv4.ip_forward=0
ip link set lo up
ip link add a0 type veth peer name a1; ip link add b0 type veth peer name b1
for i in a0 a1 b0 b1; do ip link set $i up; done
ip addr add 192.0.2.1/25 dev a0; ip addr add 192.0.2.3/25 dev a0; ip addr add 192.0.2.129/25 dev b0
ip addr add 203.0.113.1/32 dev lo
ip -6 addr add 2001:db8:1::1/64 dev a0 nodad; ip -6 addr add 2001:db8:2::1/64 dev b0 nodad
ip route add default metric 10 via 192.0.2.130; ip route add default metric 20 via 192.0.2.2
ip route add 10.1.0.0/16 proto bgp metric 20 nexthop via 192.0.2.2 weight 3 nexthop via 192.0.2.130 weight 200
ip route add blackhole 10.2.0.0/16; ip route add prohibit 10.3.0.0/16; ip route add throw 10.4.0.0/16
ip route add 10.5.0.0/16 via inet6 2001:db8:1::2 dev a0
ip route add local 10.6.0.0/16 dev lo; ip route add 10.7.0.0/16 via 192.0.2.2 table 77
ip -6 route add 2001:db8:10::/48 nexthop via 2001:db8:1::2 dev a0 weight 2 nexthop via fe80::9 dev b0
ip -6 route add blackhole 2001:db8:11::/48
ip nexthop add id 1 via 192.0.2.2 dev a0; ip nexthop add id 2 via 192.0.2.130 dev b0; ip nexthop add id 3 blackhole
ip nexthop add id 10 group 1,5/2,7
ip route add 10.8.0.0/16 nhid 10; ip route add 10.9.0.0/16 nhid 3
while read -r command; do ip $command 2>/dev/null || :; done <<END
route add 10.10.0.0/16 encap mpls 100/200 via 192.0.2.2
route add 10.11.0.0/16 encap mpls 100 via 192.0.2.2
route add 10.12.0.0/16 encap ip id 100 dst 192.0.2.7 src 192.0.2.1 ttl 7 tos 8 via 192.0.2.2 dev a0
route add 10.13.0.0/16 nexthop encap ip dst 192.0.2.7 dev a0 nexthop encap ip dst 192.0.2.8 via 192.0.2.130
-6 route add 2001:db8:12::/48 encap ip6 id 9 dst 2001:db8:1::7 via 2001:db8:1::2
-6 route add 2001:db8:13::/48 encap seg6 mode encap segs 2001:db8:1::7 dev a0
link add t0 type vxlan id 100 dstport 4789 remote 192.0.2.7 local 192.0.2.1 ttl 5
link add t1 type vxlan id 101 dstport 4790 remote 2001:db8:1::7 local 2001:db8:1::1
link add t2 type gre local 192.0.2.1 remote 192.0.2.7 ttl 9 key 4294967295
link add t3 type ipip local 192.0.2.1 remote 192.0.2.7
link add t4 type sit remote 192.0.2.8
link add t5 type ip6tnl local 2001:db8:1::1 remote 2001:db8:1::7
link add t6 type ip6gre local 2001:db8:1::1 remote 2001:db8:1::7 key 7
END
)";

// In the calling thread, which is left in a namespace of its own. Returns why it cannot, or nothing.
std::string enterEmptyNamespace() {
   if (unshare(CLONE_NEWNET) != 0) {
      return "no privilege to make a network namespace";
   }
   return outputOf("ip -V").find("iproute2") == std::string::npos ? "no ip command" : outputOf(setUp);
}

// What iproute2 shows, left in a directory, and as a whole.
std::string shown(std::string const& dir) {
   return outputOf("cd " + dir + R"( && ip -j -d addr >addr.json && ip -j -d -4 route show table all >routes4.json &&
ip -j -d -6 route show table all >routes6.json && cat *.json)");
}

// Links settle in the background: compares what was read while iproute2 showed the same before and after.
void compare() {
   Vault::Testing::TempDir const dir;
   state::State state;
   std::string before;
   std::string after = shown(dir / "");
   for (int attempt = 0; attempt < 50 && before != after; ++attempt) {
      before = std::exchange(after, "");
      state = kernel::readMachine();
      after = shown(dir / "");
   }
   ASSERT_EQ(before, after);
   EXPECT_EQ(difference(allLines(state), shownLines(dir / "")), Lines());
   EXPECT_FALSE(state.vrfs.front().routing);
}

void compareLinkStates() {
   compare();
   // One way of the multipath routes is dead, and the other default route takes over.
   EXPECT_EQ(outputOf("sysctl -qw net.ipv4.conf.all.ignore_routes_with_linkdown=1; ip link set b1 down"), "");
   compare();
   // The kernel stops telling what next-hop objects stand for.
   Lines const before = routeLines(kernel::readMachine());
   EXPECT_EQ(outputOf("sysctl -qw net.ipv4.nexthop_compat_mode=0"), "");
   EXPECT_EQ(difference(routeLines(kernel::readMachine()), before), Lines());
}

// Of all kinds that are dumped, from when it is made on.
class Notifications {
 public:
   Notifications() : socket_(::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE)) {
      sockaddr_nl address{};
      address.nl_family = AF_NETLINK;
      EXPECT_EQ(::bind(socket_, reinterpret_cast<sockaddr const*>(&address), sizeof address), 0);
      for (int const group : {RTNLGRP_LINK, RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV6_IFADDR, RTNLGRP_IPV4_ROUTE,
                              RTNLGRP_IPV6_ROUTE, RTNLGRP_NEXTHOP}) {
         EXPECT_EQ(::setsockopt(socket_, SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group), 0);
      }
   }
   ~Notifications() { ::close(socket_); }

   void giveTo(kernel::Model& model) {
      std::vector<std::byte> datagram(1 << 16);
      kernel::Changes changes;
      for (ssize_t count = 0; (count = ::recv(socket_, datagram.data(), datagram.size(), 0)) > 0;) {
         model.notify(kernel::Bytes(datagram).first(static_cast<std::size_t>(count)), changes);
      }
   }

 private:
   int socket_;
};

// After each of the commands the model that follows them is as one that is read anew. Each makes a difference, be it
// only to what one of the next ones reveals.
void compareNotified() {
   Notifications notifications;
   kernel::Model model(kernel::readDumps());
   std::istringstream commands(R"(route add 10.20.0.0/16 via 192.0.2.2
route append 10.20.0.0/16 via 192.0.2.4
route prepend 10.20.0.0/16 via 192.0.2.5
route append 10.20.0.0/16 proto bgp nexthop via 192.0.2.2 weight 3 nexthop via 192.0.2.130
route add 10.20.0.0/16 tos 10 via 192.0.2.6
route add 10.20.0.0/16 metric 5 via 192.0.2.6
route replace 10.20.0.0/16 via 192.0.2.7
route del 10.20.0.0/16 via 192.0.2.7
route del 10.20.0.0/16 via 192.0.2.2
route del 10.20.0.0/16 via 192.0.2.4
route del 10.20.0.0/16
route del 10.20.0.0/16 tos 10
route del 10.20.0.0/16 metric 5
route replace 10.2.0.0/16 via 192.0.2.2
route del default metric 10
nexthop replace id 1 via 192.0.2.9 dev a0
nexthop del id 2
route replace 10.8.0.0/16 nhid 1
nexthop replace id 3 via 192.0.2.9 dev a0
-6 route append 2001:db8:10::/48 via 2001:db8:2::7 dev b0
-6 route append 2001:db8:10::/48 via 2001:db8:2::5 dev b0 metric 9
-6 route del 2001:db8:10::/48 via 2001:db8:1::2 dev a0
-6 route del 2001:db8:10::/48 via fe80::9 dev b0
-6 route append 2001:db8:10::/48 dev a0 metric 7
-6 route append 2001:db8:10::/48 dev b0 metric 7
-6 route replace 2001:db8:10::/48 via 2001:db8:2::8 dev b0
-6 route replace 2001:db8:10::/48 nexthop via 2001:db8:2::9 dev b0 nexthop via 2001:db8:1::9 dev a0
-6 route del 2001:db8:10::/48 dev a0 metric 7
-6 route del 2001:db8:10::/48 metric 7
-6 route del 2001:db8:10::/48 metric 9
-6 route replace 2001:db8:11::/48 via 2001:db8:1::2
-6 route del 2001:db8:11::/48
addr add 192.0.2.1/32 dev a0 scope link
addr add 192.0.2.5/26 dev a0
addr add 192.0.2.4/25 dev a0
addr del 192.0.2.3/25 dev a0
addr del 192.0.2.1/25 dev a0
-6 addr add 2001:db8:1::3/64 dev a0 nodad
-6 addr add fe80::77/64 dev a0 nodad
-6 addr del 2001:db8:1::1/64 dev a0
link add c0 type veth peer name c1
link set c0 up
link set c0 alias text
link set c0 down
link set c0 name c2
link del c2
)");
   for (std::string command; std::getline(commands, command);) {
      EXPECT_EQ(outputOf("ip " + command), "") << command;
      bool isEqual = false;
      for (int attempt = 0; attempt < 100 && !isEqual; ++attempt) {
         std::this_thread::sleep_for(std::chrono::milliseconds(attempt));
         notifications.giveTo(model);
         isEqual = kernel::stateFrom(model) == kernel::stateFrom(kernel::Model(kernel::readDumps()));
      }
      state::State const anew = kernel::stateFrom(kernel::Model(kernel::readDumps()));
      ASSERT_TRUE(isEqual) << command
                           << testing::PrintToString(difference(allLines(kernel::stateFrom(model)), allLines(anew)));
   }
}

}  // namespace

TEST(LiveMachine, isReadAgainWhenTheSocketRanOver) {
   kernel::Dumps const before = kernel::readDumps();
   overruns = 7;
   EXPECT_EQ(kernel::readDumps().addresses.size(), before.addresses.size());
   EXPECT_LE(overruns, 0);
   overruns = 8;
   EXPECT_THROW(kernel::readDumps(), kernel::RtnlError);
   overruns = 0;
}

TEST(LiveMachine, hasTheRoutesThatIpRouteShowsAndFollowsWhatIsNotified) {
   for (auto const compareAll : {compareLinkStates, compareNotified}) {
      std::string obstacle;
      std::thread([&] {
         obstacle = enterEmptyNamespace();
         if (obstacle.empty()) {
            EXPECT_NO_THROW(compareAll());
         }
      }).join();
      if (!obstacle.empty()) {
         GTEST_SKIP() << obstacle;
      }
   }
}

}  // namespace kernelTest
