#pragma once

#include "programs/kernel/RtnlBytes.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace follow {

// Where a daemon connects to.
struct FpmAddress {
   static constexpr U16 defaultPort = 2620;

   std::string address = "127.0.0.1";
   U16 port = defaultPort;

   // "[ADDRESS:]PORT", an IPv6 address in brackets; std::invalid_argument that tells what is wrong.
   static FpmAddress parse(std::string_view text);
   std::string text() const;
};

// Takes one connection of a routing daemon that streams its FIB: rtnetlink messages, each behind a header of version 1,
// type 1 and the length of both. Bytes that are anything else end the connection with one line to the user.
class FpmServer {
 public:
   using Report = std::function<void(std::string_view)>;

   // kernel::RtnlError when nobody can connect there.
   FpmServer(FpmAddress const& address, Report report);
   ~FpmServer();
   FpmServer(FpmServer const&) = delete;
   FpmServer& operator=(FpmServer const&) = delete;

   // To wait for; -1 when there is none.
   int listener() const noexcept { return listener_; }
   int connection() const noexcept { return connection_; }

   // Takes a connection that has come, unless there is one; whether it did. What is left of an earlier one that has
   // ended is received first.
   bool isNewConnection();
   // Hands over what has come, messages one after the other. What `take` throws as an RtnlError is the daemon's fault.
   void receive(std::function<void(kernel::Bytes messages)> const& take);

 private:
   void takeFrames(std::function<void(kernel::Bytes messages)> const& take);
   void end(std::string_view why);

   Report report_;
   int listener_ = -1;
   int connection_ = -1;
   std::vector<std::byte> received_;
};

}  // namespace follow
