#include "programs/kernel/Subscription.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace kernel {

namespace {

// Room for a burst while something else is done. More than the system's bound takes privilege.
constexpr int bufferSize = 64 << 20;

bool join(int socket, int group) {
   return ::setsockopt(socket, SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof group) == 0;
}

void joinAll(int socket, Subscription::Of what) {
   for (int const group :
        {RTNLGRP_LINK, RTNLGRP_IPV4_IFADDR, RTNLGRP_IPV6_IFADDR, RTNLGRP_IPV4_NETCONF, RTNLGRP_IPV6_NETCONF}) {
      if (!join(socket, group)) {
         throw RtnlError::ofSystem("cannot subscribe");
      }
   }
   if (what == Subscription::Of::everything) {
      if (!join(socket, RTNLGRP_IPV4_ROUTE) || !join(socket, RTNLGRP_IPV6_ROUTE)) {
         throw RtnlError::ofSystem("cannot subscribe");
      }
      join(socket, RTNLGRP_NEXTHOP);  // older kernels have none
   }
}

}  // namespace

Subscription::Subscription(Of what)
    : socket_(::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE)) {
   sockaddr_nl address{};
   address.nl_family = AF_NETLINK;
   if (socket_ < 0 || ::bind(socket_, reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0) {
      throw RtnlError::ofSystem("cannot open a socket");
   }
   if (::setsockopt(socket_, SOL_SOCKET, SO_RCVBUFFORCE, &bufferSize, sizeof bufferSize) != 0) {
      ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &bufferSize, sizeof bufferSize);
   }
   joinAll(socket_, what);
}

Subscription::~Subscription() {
   ::close(socket_);
}

Subscription::Received Subscription::receive(std::function<void(Bytes datagram)> const& take) {
   std::array<iovec, batch> parts{};
   std::array<mmsghdr, batch> messages{};
   for (std::size_t i = 0; i < batch; ++i) {
      parts[i] = {buffer_.data() + i * datagramSize, datagramSize};
      messages[i].msg_hdr.msg_iov = &parts[i];
      messages[i].msg_hdr.msg_iovlen = 1;
   }
   int const count = ::recvmmsg(socket_, messages.data(), batch, MSG_DONTWAIT, nullptr);
   if (count < 0) {
      if (errno == EAGAIN || errno == EINTR) {
         return Received::nothing;
      }
      return errno == ENOBUFS ? Received::overrun : throw RtnlError(std::string("rtnetlink: ") + std::strerror(errno));
   }
   for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
      if ((messages[i].msg_hdr.msg_flags & MSG_TRUNC) != 0) {
         return Received::overrun;  // larger than anything that the kernel tells
      }
      take(Bytes(buffer_).subspan(i * datagramSize, messages[i].msg_len));
   }
   return Received::some;
}

}  // namespace kernel
