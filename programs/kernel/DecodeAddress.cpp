#include "Lumen/Prefix.h"
#include "programs/kernel/Decode.h"
#include "programs/kernel/RtnlAddress.h"

#include <linux/if_addr.h>
#include <sys/socket.h>

namespace kernel {

using Lumen::AddressFamily;

std::optional<Address> decodeAddress(Bytes payload) {
   ByteReader in(payload);
   auto const header = in.take<ifaddrmsg>();
   AddressFamily const family = familyOf(header.ifa_family);
   if (family == AddressFamily::unknown) {
      return std::nullopt;
   }
   Address address;
   address.link = header.ifa_index;
   address.length = header.ifa_prefixlen;
   address.scope = header.ifa_scope;
   address.secondary = family == AddressFamily::ipv4 && (header.ifa_flags & IFA_F_SECONDARY) != 0;
   Lumen::IpGenAddr peer;  // or, without IFA_LOCAL, the address itself
   forEachAttribute(in.rest(), [&](Attribute const& attribute) {
      switch (attribute.type) {
         case IFA_LOCAL:
            address.local = addressOf(attribute, family);
            break;
         case IFA_ADDRESS:
            peer = addressOf(attribute, family);
            break;
         default:
            break;
      }
   });
   if (address.local.isEmpty()) {
      address.local = peer;
   }
   U8 const maxLength = family == AddressFamily::ipv4 ? Lumen::Prefix::maxLength : Lumen::Ip6Prefix::maxLength;
   if (address.local.isEmpty() || address.length > maxLength) {
      throw RtnlError("rtnetlink: improper address of link " + std::to_string(address.link));
   }
   return address;
}

}  // namespace kernel
