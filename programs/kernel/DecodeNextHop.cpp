#include "programs/kernel/Decode.h"
#include "programs/kernel/DecodeHops.h"
#include "programs/kernel/RtnlAddress.h"

#include <linux/nexthop.h>
#include <linux/rtnetlink.h>

namespace kernel {

namespace {

// A nexthop_grp. Newer kernels carry the upper half of the weight in what was reserved, and zero, before; headers call
// it by different names.
struct GroupEntry {
   U32 id;
   U8 weight;
   U8 weightHigh;
   U16 reserved;
};
static_assert(sizeof(GroupEntry) == sizeof(nexthop_grp));

std::vector<GroupMember> decodeGroup(Bytes bytes) {
   std::vector<GroupMember> members;
   for (ByteReader in(bytes); !in.atEnd();) {
      auto const entry = in.take<GroupEntry>();
      U32 const weight = entry.weight + (U32{entry.weightHigh} << 8) + 1;
      if (weight > 0xffff) {
         throw RtnlError("rtnetlink: weight of a next-hop group out of range");
      }
      members.push_back({entry.id, static_cast<U16>(weight)});
   }
   return members;
}

}  // namespace

NextHop decodeNextHop(Bytes payload) {
   ByteReader in(payload);
   auto const header = in.take<nhmsg>();
   NextHop nextHop;
   HopParts parts;
   parts.hop.dead = (header.nh_flags & RTNH_F_DEAD) != 0;
   forEachAttribute(in.rest(), [&](Attribute const& attribute) {
      switch (attribute.type) {
         case NHA_ID:
            nextHop.id = attribute.as<U32>();
            break;
         case NHA_GROUP:
            nextHop.group = decodeGroup(attribute.payload);
            break;
         case NHA_BLACKHOLE:
            nextHop.blackhole = true;
            break;
         case NHA_OIF:
            parts.hop.link = attribute.as<U32>();
            break;
         case NHA_GATEWAY:
            parts.hop.gateway = addressOf(attribute, familyOf(header.nh_family));
            break;
         case NHA_ENCAP_TYPE:
            parts.encapType = attribute.as<U16>();
            break;
         case NHA_ENCAP:
            parts.encapBytes = attribute.payload;
            break;
         default:
            break;
      }
   });
   nextHop.hop = parts.whole();
   return nextHop;
}

}  // namespace kernel
