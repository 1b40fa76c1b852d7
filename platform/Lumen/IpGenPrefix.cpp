#include "Lumen/IpGenPrefix.h"

namespace Lumen {

// Only IPv6 has colons, and has them in every text.
IpGenPrefix IpGenPrefix::parse(std::string_view text) {
   if (text.find(':') != std::string_view::npos) {
      return Ip6Prefix::parse(text);
   }
   return Prefix::parse(text);
}

std::size_t IpGenPrefix::formatTo(char* out) const noexcept {
   return family_ == AddressFamily::ipv6 ? prefix6().formatTo(out) : prefix().formatTo(out);
}

}  // namespace Lumen
