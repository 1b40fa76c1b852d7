#include "programs/kernel/Decode.h"

#include <linux/if.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>

namespace kernel {

namespace {

void takeLinkInfo(Link& link, Bytes linkInfo) {
   Bytes data;
   forEachAttribute(linkInfo, [&](Attribute const& attribute) {
      if (attribute.type == IFLA_INFO_KIND) {
         link.kind = attribute.text();
      } else if (attribute.type == IFLA_INFO_DATA) {
         data = attribute.payload;
      }
   });
   if (link.kind != "vrf") {
      link.tunnel = deviceEncap(link.kind, data);
      return;
   }
   forEachAttribute(data, [&](Attribute const& attribute) {
      if (attribute.type == IFLA_VRF_TABLE) {
         link.vrfTable = attribute.as<U32>();
      }
   });
}

}  // namespace

std::optional<Link> decodeLink(Bytes payload) {
   ByteReader in(payload);
   auto const header = in.take<ifinfomsg>();
   if (header.ifi_family != AF_UNSPEC) {
      return std::nullopt;
   }
   Link link;
   link.index = static_cast<U32>(header.ifi_index);
   link.flags = header.ifi_flags;
   forEachAttribute(in.rest(), [&](Attribute const& attribute) {
      switch (attribute.type) {
         case IFLA_IFNAME:
            link.name = attribute.text();
            break;
         case IFLA_IFALIAS:
            link.alias = attribute.text();
            break;
         case IFLA_MASTER:
            link.master = attribute.as<U32>();
            break;
         case IFLA_LINKINFO:
            takeLinkInfo(link, attribute.payload);
            break;
         default:
            break;
      }
   });
   if (link.name.empty() || link.name.size() >= IFNAMSIZ) {
      throw RtnlError("rtnetlink: link " + std::to_string(link.index) + " has no proper name");
   }
   return link;
}

}  // namespace kernel
