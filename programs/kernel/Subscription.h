#pragma once

#include "programs/kernel/RtnlBytes.h"

#include <array>
#include <functional>
#include <vector>

namespace kernel {

// The notifications of everything that a Model keeps, from when this is made on, in the caller's network namespace.
class Subscription {
 public:
   enum class Of { everything, entities };  // the latter without routes and next hops

   // RtnlError when the kernel refuses.
   explicit Subscription(Of what);
   ~Subscription();
   Subscription(Subscription const&) = delete;
   Subscription& operator=(Subscription const&) = delete;

   // To wait for.
   int fd() const noexcept { return socket_; }

   enum class Received { nothing, some, overrun };
   // Hands over what has come, some datagrams at most. After an overrun notifications are missing.
   Received receive(std::function<void(Bytes datagram)> const& take);

 private:
   static constexpr std::size_t batch = 64;
   static constexpr std::size_t datagramSize = 32 << 10;

   int socket_ = -1;
   std::vector<std::byte> buffer_ = std::vector<std::byte>(batch * datagramSize);
};

}  // namespace kernel
