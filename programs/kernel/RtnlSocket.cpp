#include "programs/kernel/RtnlSocket.h"

#include "programs/kernel/RtnlMessages.h"

#include <libmnl/libmnl.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/nexthop.h>
#include <linux/rtnetlink.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace kernel {

namespace {

constexpr int maxAttempts = 8;
constexpr int socketBufferSize = 4 << 20;
constexpr std::size_t datagramSize = 256 << 10;  // the kernel fills up to 32 KiB if the reader has room for it

struct SocketCloser {
   void operator()(mnl_socket* socket) const noexcept { mnl_socket_close(socket); }
};
using Socket = std::unique_ptr<mnl_socket, SocketCloser>;

Socket openSocket() {
   Socket socket(mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC));
   if (!socket || mnl_socket_bind(socket.get(), 0, MNL_SOCKET_AUTOPID) < 0) {
      throw RtnlError::ofSystem("cannot open a socket");
   }
   // Both only help: older kernels filter less, and the system bounds the buffer.
   int one = 1;
   mnl_socket_setsockopt(socket.get(), NETLINK_GET_STRICT_CHK, &one, sizeof one);
   setsockopt(mnl_socket_get_fd(socket.get()), SOL_SOCKET, SO_RCVBUF, &socketBufferSize, sizeof socketBufferSize);
   return socket;
}

// Asks for everything of one kind. The header names the address family at most: all else in it selects nothing.
template <class Header>
void request(mnl_socket* socket, U16 type, Header const& header, std::optional<U32> extendedMask = {}) {
   alignas(nlmsghdr) std::array<char, 128> buffer{};
   nlmsghdr* const message = mnl_nlmsg_put_header(buffer.data());
   message->nlmsg_type = type;
   message->nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
   std::memcpy(mnl_nlmsg_put_extra_header(message, sizeof header), &header, sizeof header);
   if (extendedMask) {
      mnl_attr_put_u32(message, IFLA_EXT_MASK, *extendedMask);
   }
   if (mnl_socket_sendto(socket, message, message->nlmsg_len) < 0) {
      throw RtnlError::ofSystem("cannot ask");
   }
}

// One dump, or none when its contents changed while it was read.
std::optional<std::vector<std::byte>> receive(mnl_socket* socket) {
   std::vector<std::byte> dump;
   std::vector<std::byte> datagram(datagramSize);
   bool interrupted = false;
   for (bool last = false; !last;) {
      ssize_t const count = mnl_socket_recvfrom(socket, datagram.data(), datagram.size());
      if (count < 0 && errno == EINTR) {
         continue;
      }
      if (count < 0 && errno == ENOBUFS) {
         return std::nullopt;
      }
      if (count < 0) {
         throw RtnlError::ofSystem("cannot receive");
      }
      Bytes const received = Bytes(datagram).first(static_cast<std::size_t>(count));
      dump.insert(dump.end(), received.begin(), received.end());
      DatagramState const state = inspectDatagram(received);
      last = state.last;
      interrupted |= state.interrupted;
   }
   return interrupted ? std::nullopt : std::optional(std::move(dump));
}

template <class Header>
std::vector<std::byte> readDump(U16 type, Header const& header, std::optional<U32> extendedMask = {}) {
   for (int attempt = 0; attempt < maxAttempts; ++attempt) {
      Socket const socket = openSocket();  // a fresh one each time: nothing of a failed attempt is left in it
      request(socket.get(), type, header, extendedMask);
      if (auto dump = receive(socket.get())) {
         return *std::move(dump);
      }
   }
   throw DumpInterrupted("rtnetlink: what is dumped keeps changing");
}

rtmsg routesOf(U8 family) {
   rtmsg header{};
   header.rtm_family = family;
   return header;
}

bool isWanted(Lumen::AddressFamily family, std::optional<Lumen::AddressFamily> wanted) {
   return !wanted || *wanted == family;
}

// Of nothing.
std::vector<std::byte> emptyDump() {
   std::array<nlmsghdr, 1> end{};
   end[0].nlmsg_len = sizeof(nlmsghdr) + sizeof(S32);
   end[0].nlmsg_type = NLMSG_DONE;
   auto const bytes = std::as_bytes(std::span(end));
   std::vector<std::byte> dump(bytes.begin(), bytes.end());
   dump.resize(end[0].nlmsg_len);
   return dump;
}

std::vector<std::byte> noneIfUnsupported(std::vector<std::byte> dump) {
   return inspectDatagram(dump).error == EOPNOTSUPP ? std::vector<std::byte>{} : dump;
}

}  // namespace

Dumps readEntityDumps() {
   return {.links = readDump(RTM_GETLINK, ifinfomsg{}, RTEXT_FILTER_SKIP_STATS),
           .addresses = readDump(RTM_GETADDR, ifaddrmsg{}),
           .nextHops = {},
           .routes4 = {},
           .routes6 = {}};
}

Dumps readDumps() {
   return readDumps({});
}

Dumps readDumps(std::optional<Lumen::AddressFamily> family) {
   using Lumen::AddressFamily;
   Dumps dumps = readEntityDumps();
   dumps.nextHops = noneIfUnsupported(readDump(RTM_GETNEXTHOP, nhmsg{}));
   dumps.routes4 = isWanted(AddressFamily::ipv4, family) ? readDump(RTM_GETROUTE, routesOf(AF_INET)) : emptyDump();
   dumps.routes6 = isWanted(AddressFamily::ipv6, family) ? readDump(RTM_GETROUTE, routesOf(AF_INET6)) : emptyDump();
   return dumps;
}

std::vector<std::byte> askForRoute(Lumen::IpGenAddr const& address) {
   bool const isIp4 = address.family() == Lumen::AddressFamily::ipv4;
   U32 const ip4 = htonl(address.ip().value());
   auto const ip6 = address.ip6().bytes();
   Socket const socket = openSocket();
   alignas(nlmsghdr) std::array<char, 128> buffer{};
   nlmsghdr* const message = mnl_nlmsg_put_header(buffer.data());
   message->nlmsg_type = RTM_GETROUTE;
   message->nlmsg_flags = NLM_F_REQUEST;
   rtmsg header = routesOf(isIp4 ? AF_INET : AF_INET6);
   header.rtm_dst_len = isIp4 ? 32 : 128;
   header.rtm_flags = RTM_F_FIB_MATCH | RTM_F_LOOKUP_TABLE;
   std::memcpy(mnl_nlmsg_put_extra_header(message, sizeof header), &header, sizeof header);
   isIp4 ? mnl_attr_put(message, RTA_DST, sizeof ip4, &ip4) : mnl_attr_put(message, RTA_DST, sizeof ip6, ip6.data());
   std::vector<std::byte> reply(datagramSize);
   ssize_t count = mnl_socket_sendto(socket.get(), message, message->nlmsg_len);
   if (count >= 0) {
      count = mnl_socket_recvfrom(socket.get(), reply.data(), reply.size());
   }
   if (count < 0) {
      throw RtnlError::ofSystem("cannot ask");
   }
   reply.resize(static_cast<std::size_t>(count));
   return reply;
}

}  // namespace kernel
