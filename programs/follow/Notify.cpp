#include "programs/follow/Notify.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace follow {

void notifySystem(std::string_view state) {
   char const* const name = std::getenv("NOTIFY_SOCKET");
   sockaddr_un address{};
   if (name == nullptr || std::strlen(name) >= sizeof address.sun_path || (*name != '/' && *name != '@')) {
      return;
   }
   address.sun_family = AF_UNIX;
   std::strcpy(address.sun_path, name);
   if (*name == '@') {
      address.sun_path[0] = '\0';  // in the namespace of abstract names
   }
   auto const length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + std::strlen(name));
   int const socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
   ::sendto(socket, state.data(), state.size(), MSG_NOSIGNAL, reinterpret_cast<sockaddr const*>(&address), length);
   ::close(socket);
}

}  // namespace follow
