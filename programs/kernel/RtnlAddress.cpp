#include "programs/kernel/RtnlAddress.h"

#include <endian.h>
#include <sys/socket.h>
#include <array>

namespace kernel {

using Lumen::AddressFamily;

AddressFamily familyOf(U16 linuxFamily) {
   switch (linuxFamily) {
      case AF_INET:
         return AddressFamily::ipv4;
      case AF_INET6:
         return AddressFamily::ipv6;
      default:
         return AddressFamily::unknown;
   }
}

Lumen::IpGenAddr addressOf(Attribute const& attribute, AddressFamily family) {
   switch (family) {
      case AddressFamily::ipv4:
         return Lumen::IpGenAddr(Lumen::IpAddr(be32toh(attribute.as<U32>())));
      case AddressFamily::ipv6:
         return Lumen::IpGenAddr(Lumen::Ip6Addr(attribute.as<std::array<U8, 16>>()));
      case AddressFamily::unknown:
         break;
   }
   throw RtnlError("rtnetlink: address of an unknown family");
}

}  // namespace kernel
