#include "programs/follow/FpmServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace follow {

namespace {

constexpr std::size_t readSize = 1 << 20;
constexpr std::size_t maxRead = 4 << 20;  // that is handed over at a time
constexpr std::size_t headerSize = 4;
constexpr std::byte version{1};
constexpr std::byte netlinkType{1};

struct SocketAddress {
   sockaddr_storage storage{};
   socklen_t length = 0;
};

SocketAddress socketAddress(FpmAddress const& address) {
   SocketAddress result;
   auto& ip4 = reinterpret_cast<sockaddr_in&>(result.storage);
   auto& ip6 = reinterpret_cast<sockaddr_in6&>(result.storage);
   if (::inet_pton(AF_INET, address.address.c_str(), &ip4.sin_addr) == 1) {
      ip4.sin_family = AF_INET;
      ip4.sin_port = htons(address.port);
      result.length = sizeof ip4;
   } else if (::inet_pton(AF_INET6, address.address.c_str(), &ip6.sin6_addr) == 1) {
      ip6.sin6_family = AF_INET6;
      ip6.sin6_port = htons(address.port);
      result.length = sizeof ip6;
   }
   return result;
}

std::size_t lengthOf(std::byte const* header) {
   return std::to_integer<std::size_t>(header[2]) << 8U | std::to_integer<std::size_t>(header[3]);
}

}  // namespace

FpmAddress FpmAddress::parse(std::string_view text) {
   FpmAddress parsed;
   if (auto const colon = text.rfind(':'); colon != std::string_view::npos) {
      std::string_view address = text.substr(0, colon);
      if (address.starts_with('[') && address.ends_with(']')) {
         address = address.substr(1, address.size() - 2);
      }
      parsed.address = address;
      text.remove_prefix(colon + 1);
   }
   auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed.port);
   if (error != std::errc() || end != text.data() + text.size() || parsed.port == 0 ||
       socketAddress(parsed).length == 0) {
      throw std::invalid_argument("not [ADDRESS:]PORT, such as 2620 or 127.0.0.1:2620");
   }
   return parsed;
}

std::string FpmAddress::text() const {
   bool const isIp6 = address.find(':') != std::string::npos;
   return (isIp6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

FpmServer::FpmServer(FpmAddress const& address, Report report) : report_(std::move(report)) {
   SocketAddress const place = socketAddress(address);
   int const one = 1;
   listener_ = ::socket(place.storage.ss_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
   ::setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
   if (::bind(listener_, reinterpret_cast<sockaddr const*>(&place.storage), place.length) != 0 ||
       ::listen(listener_, 1) != 0) {
      std::string const why = std::strerror(errno);
      ::close(listener_);
      throw kernel::RtnlError("fpm: nobody can connect to " + address.text() + ": " + why);
   }
}

FpmServer::~FpmServer() {
   ::close(connection_);
   ::close(listener_);
}

bool FpmServer::isNewConnection() {
   int const accepted = ::accept4(listener_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
   if (accepted < 0) {
      return false;
   }
   if (connection_ >= 0) {
      ::close(accepted);
      report_("fpm: a second daemon was refused, one is connected");
      return false;
   }
   connection_ = accepted;
   return true;
}

void FpmServer::receive(std::function<void(kernel::Bytes messages)> const& take) {
   for (std::size_t total = 0; connection_ >= 0 && total < maxRead;) {
      std::size_t const before = received_.size();
      received_.resize(before + readSize);
      ssize_t const count = ::recv(connection_, received_.data() + before, readSize, 0);
      received_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
      if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
         return;
      }
      if (count <= 0) {
         return end(count == 0 ? "" : std::strerror(errno));
      }
      total += static_cast<std::size_t>(count);
      takeFrames(take);
   }
}

void FpmServer::takeFrames(std::function<void(kernel::Bytes messages)> const& take) {
   std::size_t at = 0;
   while (received_.size() - at >= headerSize) {
      std::byte const* const header = received_.data() + at;
      std::size_t const length = lengthOf(header);
      if (header[0] != version || header[1] != netlinkType || length < headerSize) {
         return end("not a header of version 1 with netlink behind it");
      }
      if (received_.size() - at < length) {
         break;
      }
      try {
         take(kernel::Bytes(received_).subspan(at + headerSize, length - headerSize));
      } catch (kernel::RtnlError const& error) {
         return end(error.what());
      }
      at += length;
   }
   received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(at));
}

void FpmServer::end(std::string_view why) {
   ::close(std::exchange(connection_, -1));
   received_.clear();
   if (!why.empty()) {
      report_("fpm: the connection was closed: " + std::string(why));
   }
}

}  // namespace follow
