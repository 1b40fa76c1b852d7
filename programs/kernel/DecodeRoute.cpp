#include "Lumen/Prefix.h"
#include "programs/kernel/Decode.h"
#include "programs/kernel/DecodeHops.h"
#include "programs/kernel/RtnlAddress.h"

#include <linux/rtnetlink.h>

namespace kernel {

using Lumen::AddressFamily;

namespace {

template <class P>
Lumen::IpGenPrefix prefixOf(typename P::AddrType address, U8 length) {
   if (length > P::maxLength || P::masked(address, length).address() != address) {
      throw RtnlError("rtnetlink: " + address.stringValue() + "/" + std::to_string(length) + " is not a prefix");
   }
   return Lumen::IpGenPrefix(P(address, length));
}

Lumen::IpGenPrefix prefixOf(Lumen::IpGenAddr const& address, U8 length, AddressFamily family) {
   if (address.isEmpty() && length != 0) {
      throw RtnlError("rtnetlink: route without its destination");
   }
   return family == AddressFamily::ipv4
              ? prefixOf<Lumen::Prefix>(address.isEmpty() ? Lumen::IpAddr{} : address.ip(), length)
              : prefixOf<Lumen::Ip6Prefix>(address.isEmpty() ? Lumen::Ip6Addr{} : address.ip6(), length);
}

}  // namespace

std::optional<KernelRoute> decodeRoute(Bytes payload) {
   ByteReader in(payload);
   auto const header = in.take<rtmsg>();
   AddressFamily const family = familyOf(header.rtm_family);
   if (family == AddressFamily::unknown) {
      return std::nullopt;
   }
   KernelRoute route;
   route.sourceLength = header.rtm_src_len;
   route.tos = header.rtm_tos;
   route.protocol = header.rtm_protocol;
   route.scope = header.rtm_scope;
   route.type = header.rtm_type;
   route.table = header.rtm_table;
   route.flags = header.rtm_flags;
   Lumen::IpGenAddr destination;
   HopParts single;
   forEachAttribute(in.rest(), [&](Attribute const& attribute) {
      switch (attribute.type) {
         case RTA_DST:
            destination = addressOf(attribute, family);
            break;
         case RTA_TABLE:
            route.table = attribute.as<U32>();
            break;
         case RTA_PRIORITY:
            route.metric = attribute.as<U32>();
            break;
         case RTA_NH_ID:
            route.nextHopId = attribute.as<U32>();
            break;
         case RTA_MULTIPATH:
            route.hops = decodeMultipath(attribute.payload, family);
            break;
         default:
            single.take(attribute, family);
            break;
      }
   });
   route.prefix = prefixOf(destination, header.rtm_dst_len, family);
   if (route.hops.empty() && single.hop.link != 0) {
      single.hop.dead = (header.rtm_flags & RTNH_F_DEAD) != 0;
      route.hops.push_back(single.whole());
   }
   return route;
}

}  // namespace kernel
