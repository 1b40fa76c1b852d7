#include "programs/kernel/Rtnl.h"

#include "Lumen/Prefix.h"
#include "programs/kernel/RtnlMessages.h"

#include <arpa/inet.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/lwtunnel.h>
#include <linux/nexthop.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <array>
#include <tuple>

namespace kernel {

using Lumen::AddressFamily;

namespace {

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
         return Lumen::IpGenAddr(Lumen::IpAddr(ntohl(attribute.as<U32>())));
      case AddressFamily::ipv6:
         return Lumen::IpGenAddr(Lumen::Ip6Addr(attribute.as<std::array<U8, 16>>()));
      case AddressFamily::unknown:
         break;
   }
   throw RtnlError("rtnetlink: address of an unknown family");
}

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

// A next hop together with the encapsulation that its attributes describe in two parts.
struct HopParts {
   Hop hop;
   U16 encapType = LWTUNNEL_ENCAP_NONE;
   Bytes encapBytes;

   Hop whole() {
      Encap const encap = hopEncap(encapType, encapBytes);
      if (encap.labels.stackSize() == 1) {
         hop.label = encap.labels.labels().front();
      } else if (encap != Encap()) {
         hop.encap = std::make_shared<Encap const>(encap);
      }
      return hop;
   }
};

Lumen::IpGenAddr otherFamilyGateway(Attribute const& attribute) {
   ByteReader in(attribute.payload);
   AddressFamily const family = familyOf(in.take<U16>());
   return addressOf({attribute.type, in.rest()}, family);
}

void takeHopAttribute(HopParts& parts, Attribute const& attribute, AddressFamily family) {
   switch (attribute.type) {
      case RTA_OIF:
         parts.hop.link = attribute.as<U32>();
         break;
      case RTA_GATEWAY:
         parts.hop.gateway = addressOf(attribute, family);
         break;
      case RTA_VIA:
         parts.hop.gateway = otherFamilyGateway(attribute);
         break;
      case RTA_ENCAP_TYPE:
         parts.encapType = attribute.as<U16>();
         break;
      case RTA_ENCAP:
         parts.encapBytes = attribute.payload;
         break;
      default:
         break;
   }
}

std::vector<Hop> parseMultipath(Bytes bytes, AddressFamily family) {
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
      forEachAttribute(attributes, [&](Attribute const& attribute) { takeHopAttribute(parts, attribute, family); });
      hops.push_back(parts.whole());
   }
   return hops;
}

KernelRoute parseRoute(rtmsg const& header, Bytes attributes, AddressFamily family) {
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
   forEachAttribute(attributes, [&](Attribute const& attribute) {
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
            route.hops = parseMultipath(attribute.payload, family);
            break;
         default:
            takeHopAttribute(single, attribute, family);
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

std::vector<GroupMember> parseGroup(Bytes bytes) {
   std::vector<GroupMember> members;
   for (ByteReader in(bytes); !in.atEnd();) {
      auto const entry = in.take<nexthop_grp>();
      // Newer kernels carry the upper half of the weight in what was reserved, and zero, before.
      U32 const weight = entry.weight + (U32{entry.resvd1} << 8) + 1;
      if (weight > 0xffff) {
         throw RtnlError("rtnetlink: weight of a next-hop group out of range");
      }
      members.push_back({entry.id, static_cast<U16>(weight)});
   }
   return members;
}

NextHop parseNextHop(Bytes payload) {
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
            nextHop.group = parseGroup(attribute.payload);
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

void parseLinkInfo(Link& link, Bytes linkInfo) {
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

Link parseLink(ifinfomsg const& header, Bytes attributes) {
   Link link;
   link.index = static_cast<U32>(header.ifi_index);
   link.flags = header.ifi_flags;
   forEachAttribute(attributes, [&](Attribute const& attribute) {
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
            parseLinkInfo(link, attribute.payload);
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

Address parseAddress(ifaddrmsg const& header, Bytes attributes, AddressFamily family) {
   Address address;
   address.link = header.ifa_index;
   address.length = header.ifa_prefixlen;
   address.scope = header.ifa_scope;
   Lumen::IpGenAddr peer;  // or, without IFA_LOCAL, the address itself
   forEachAttribute(attributes, [&](Attribute const& attribute) {
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

}  // namespace

std::strong_ordering operator<=>(Hop const& one, Hop const& other) {
   auto const plain = [](Hop const& h) { return std::tie(h.link, h.gateway, h.label, h.weight, h.dead); };
   auto const order = plain(one) <=> plain(other);
   if (order != 0 || !one.encap || !other.encap) {
      return order != 0 ? order : (one.encap != nullptr) <=> (other.encap != nullptr);
   }
   return *one.encap <=> *other.encap;
}

std::vector<Link> parseLinks(Bytes dump) {
   std::vector<Link> links;
   forEachMessage(dump, RTM_NEWLINK, [&](Bytes payload) {
      ByteReader in(payload);
      auto const header = in.take<ifinfomsg>();
      if (header.ifi_family == AF_UNSPEC) {
         links.push_back(parseLink(header, in.rest()));
      }
   });
   return links;
}

std::vector<Address> parseAddresses(Bytes dump) {
   std::vector<Address> addresses;
   forEachMessage(dump, RTM_NEWADDR, [&](Bytes payload) {
      ByteReader in(payload);
      auto const header = in.take<ifaddrmsg>();
      if (AddressFamily const family = familyOf(header.ifa_family); family != AddressFamily::unknown) {
         addresses.push_back(parseAddress(header, in.rest(), family));
      }
   });
   return addresses;
}

std::vector<NextHop> parseNextHops(Bytes dump) {
   std::vector<NextHop> nextHops;
   forEachMessage(dump, RTM_NEWNEXTHOP, [&](Bytes payload) { nextHops.push_back(parseNextHop(payload)); });
   return nextHops;
}

std::vector<KernelRoute> parseRoutes(Bytes dump, AddressFamily family) {
   std::vector<KernelRoute> routes;
   forEachMessage(dump, RTM_NEWROUTE, [&](Bytes payload) {
      ByteReader in(payload);
      auto const header = in.take<rtmsg>();
      if (family != AddressFamily::unknown && familyOf(header.rtm_family) == family) {
         routes.push_back(parseRoute(header, in.rest(), family));
      }
   });
   return routes;
}

DatagramState inspectDatagram(Bytes datagram) {
   DatagramState state;
   for (ByteReader in(datagram); !in.atEnd();) {
      Message const message = takeMessage(in);
      state.last |= message.type == NLMSG_DONE || message.type == NLMSG_ERROR;
      state.interrupted |= (message.flags & NLM_F_DUMP_INTR) != 0;
      if (message.type == NLMSG_ERROR) {
         state.error = reportedErrno(message);
      }
   }
   return state;
}

}  // namespace kernel
