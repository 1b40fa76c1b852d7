#include "programs/kernel/DecodeHops.h"

#include "programs/kernel/RtnlAddress.h"

#include <linux/rtnetlink.h>
#include <tuple>

namespace kernel {

using Lumen::AddressFamily;

namespace {

Lumen::IpGenAddr otherFamilyGateway(Attribute const& attribute) {
   ByteReader in(attribute.payload);
   AddressFamily const family = familyOf(in.take<U16>());
   return addressOf({attribute.type, in.rest()}, family);
}

}  // namespace

Hop HopParts::whole() {
   Encap const encap = hopEncap(encapType, encapBytes);
   if (encap.labels.stackSize() == 1) {
      hop.label = encap.labels.labels().front();
   } else if (encap != Encap()) {
      hop.encap = std::make_shared<Encap const>(encap);
   }
   return hop;
}

void HopParts::take(Attribute const& attribute, AddressFamily family) {
   switch (attribute.type) {
      case RTA_OIF:
         hop.link = attribute.as<U32>();
         break;
      case RTA_GATEWAY:
         hop.gateway = addressOf(attribute, family);
         break;
      case RTA_VIA:
         hop.gateway = otherFamilyGateway(attribute);
         break;
      case RTA_ENCAP_TYPE:
         encapType = attribute.as<U16>();
         break;
      case RTA_ENCAP:
         encapBytes = attribute.payload;
         break;
      default:
         break;
   }
}

std::vector<Hop> decodeMultipath(Bytes bytes, AddressFamily family) {
   std::vector<Hop> hops;
   for (ByteReader in(bytes); !in.atEnd();) {
      auto const header = in.peek<rtnexthop>();
      if (header.rtnh_len < sizeof(rtnexthop)) {
         throw RtnlError("rtnetlink: next hop shorter than its header");
      }
      Bytes const attributes = in.takePadded(header.rtnh_len).subspan(sizeof(rtnexthop));
      HopParts parts;
      parts.hop.link = static_cast<U32>(header.rtnh_ifindex);
      parts.hop.weight = static_cast<U16>(header.rtnh_hops + 1);
      parts.hop.dead = (header.rtnh_flags & RTNH_F_DEAD) != 0;
      forEachAttribute(attributes, [&](Attribute const& attribute) { parts.take(attribute, family); });
      hops.push_back(parts.whole());
   }
   return hops;
}

std::strong_ordering operator<=>(Hop const& one, Hop const& other) {
   auto const plain = [](Hop const& h) { return std::tie(h.link, h.gateway, h.label, h.weight, h.dead); };
   auto const order = plain(one) <=> plain(other);
   if (order != 0 || !one.encap || !other.encap) {
      return order != 0 ? order : (one.encap != nullptr) <=> (other.encap != nullptr);
   }
   return *one.encap <=> *other.encap;
}

}  // namespace kernel
