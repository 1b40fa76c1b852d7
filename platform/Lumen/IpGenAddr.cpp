#include "Lumen/IpGenAddr.h"

#include "Lumen/TextCursor.h"
#include "Zam/Error.h"

namespace Lumen {

IpGenAddr IpGenAddr::parse(std::string_view text) {
   if (text.empty()) {
      return {};
   }
   if (IpAddr addr; readWhole(text, addr)) {
      return addr;
   }
   if (Ip6Addr addr; readWhole(text, addr)) {
      return addr;
   }
   throw Zam::ParseError("an IPv4 or IPv6 address, or nothing", text);
}

std::size_t IpGenAddr::formatTo(char* out) const noexcept {
   switch (family_) {
      case AddressFamily::unknown:
         return 0;
      case AddressFamily::ipv4:
         return ip().formatTo(out);
      case AddressFamily::ipv6:
         return ip6().formatTo(out);
   }
   return 0;
}

}  // namespace Lumen
