#include "programs/kernel/RtnlEncap.h"

#include "Lumen/Vni.h"

#include <endian.h>
#include <linux/if_link.h>
#include <linux/if_tunnel.h>
#include <linux/lwtunnel.h>
#include <linux/mpls_iptunnel.h>
#include <limits>
#include <tuple>

namespace kernel {

using Lumen::MplsLabelOperation;
using Tunnel::IpEncapType;
using Tunnel::IpTunnelEncap;

namespace {

// Of the family that its size tells; an unspecified address is none.
Lumen::IpGenAddr addressOf(Attribute const& attribute) {
   bool const isIp4 = attribute.payload.size() == sizeof(U32);
   auto const address = isIp4 ? Lumen::IpGenAddr(Lumen::IpAddr(be32toh(attribute.as<U32>())))
                              : Lumen::IpGenAddr(Lumen::Ip6Addr(attribute.as<std::array<U8, 16>>()));
   return address.isZero() ? Lumen::IpGenAddr() : address;
}

MplsLabelOperation labelStack(Bytes bytes) {
   MplsLabelOperation stack(MplsLabelOperation::Operation::push, {});
   for (ByteReader in(bytes); !in.atEnd();) {
      constexpr unsigned labelShift = 12;  // below it are the traffic class, the bottom mark and the time to live
      Lumen::MplsLabel const label(be32toh(in.take<U32>()) >> labelShift);
      if (stack.stackSize() == MplsLabelOperation::maxLabels) {
         return {};
      }
      stack.labelAppend(label);
   }
   return stack.stackSize() != 0 ? stack : MplsLabelOperation();
}

MplsLabelOperation mplsEncap(Bytes encap) {
   MplsLabelOperation labels;
   forEachAttribute(encap, [&](Attribute const& attribute) {
      if (attribute.type == MPLS_IPTUNNEL_DST) {
         labels = labelStack(attribute.payload);
      }
   });
   return labels;
}

// The attributes have the same numbers in both families.
IpTunnelEncap ipEncap(Bytes encap) {
   IpTunnelEncap header;
   U64 id = 0;
   forEachAttribute(encap, [&](Attribute const& attribute) {
      switch (attribute.type) {
         case LWTUNNEL_IP_ID:
            id = be64toh(attribute.as<U64>());
            break;
         case LWTUNNEL_IP_DST:
            header.destination = addressOf(attribute);
            break;
         case LWTUNNEL_IP_SRC:
            header.source = addressOf(attribute);
            break;
         case LWTUNNEL_IP_TTL:
            header.ttl = attribute.as<U8>();
            break;
         case LWTUNNEL_IP_TOS:
            header.tos = attribute.as<U8>();
            break;
         default:
            break;
      }
   });
   if (header.destination.isEmpty() || id > std::numeric_limits<U32>::max()) {
      return {};
   }
   header.key = static_cast<U32>(id);
   header.type = IpEncapType::ipInIp;  // unless the device is of another kind
   return header;
}

// Which attributes of a kind of tunnel device tell its outer header.
struct TunnelKind {
   struct Addresses {
      U16 source;
      U16 destination;
   };

   std::string_view name;
   IpEncapType type;
   Addresses addresses;
   Addresses addresses6;
   U16 key;
   U16 ttl;
   U16 tos;
};

constexpr TunnelKind greKind(std::string_view name) {
   constexpr TunnelKind::Addresses addresses{IFLA_GRE_LOCAL, IFLA_GRE_REMOTE};
   return {name, IpEncapType::gre, addresses, addresses, IFLA_GRE_OKEY, IFLA_GRE_TTL, IFLA_GRE_TOS};
}

constexpr TunnelKind ipInIpKind(std::string_view name) {
   constexpr TunnelKind::Addresses addresses{IFLA_IPTUN_LOCAL, IFLA_IPTUN_REMOTE};
   return {name, IpEncapType::ipInIp, addresses, addresses, IFLA_IPTUN_UNSPEC, IFLA_IPTUN_TTL, IFLA_IPTUN_TOS};
}

constexpr std::array tunnelKinds{
    greKind("gre"),
    greKind("gretap"),
    greKind("ip6gre"),
    greKind("ip6gretap"),
    ipInIpKind("ipip"),
    ipInIpKind("sit"),
    ipInIpKind("ip6tnl"),
    TunnelKind{"vxlan",
               IpEncapType::vxlan,
               {IFLA_VXLAN_LOCAL, IFLA_VXLAN_GROUP},
               {IFLA_VXLAN_LOCAL6, IFLA_VXLAN_GROUP6},
               IFLA_VXLAN_ID,
               IFLA_VXLAN_TTL,
               IFLA_VXLAN_TOS},
};

// GRE keys are in network byte order, VNIs are not.
U32 keyOf(IpEncapType type, U32 value) {
   return type == IpEncapType::gre ? be32toh(value) : value & Lumen::Vni::max;
}

// 1 stands for the packet's own, 0 for zero: the nearest that there is here is 0 for both.
constexpr U8 inheritedTos = 1;

void takeTunnelAttribute(IpTunnelEncap& header, TunnelKind const& kind, Attribute const& attribute) {
   auto const isOneOf = [&](U16 one, U16 other) { return attribute.type == one || attribute.type == other; };
   if (attribute.type == 0) {
      return;
   }
   if (isOneOf(kind.addresses.source, kind.addresses6.source)) {
      header.source = addressOf(attribute);
   } else if (isOneOf(kind.addresses.destination, kind.addresses6.destination)) {
      header.destination = addressOf(attribute);
   } else if (attribute.type == kind.key) {
      header.key = keyOf(kind.type, attribute.as<U32>());
   } else if (attribute.type == kind.ttl) {
      header.ttl = attribute.as<U8>();
   } else if (attribute.type == kind.tos) {
      U8 const tos = attribute.as<U8>();
      header.tos = tos != inheritedTos ? tos : U8{0};
   }
}

}  // namespace

std::strong_ordering operator<=>(Encap const& one, Encap const& other) {
   auto const rank = [](Encap const& e) {
      return std::tie(e.labels, e.ip.type, e.ip.source, e.ip.destination, e.ip.key, e.ip.ttl, e.ip.tos);
   };
   return rank(one) <=> rank(other);
}

Encap hopEncap(U16 encapType, Bytes encap) {
   switch (encapType) {
      case LWTUNNEL_ENCAP_MPLS:
         return {mplsEncap(encap), {}};
      case LWTUNNEL_ENCAP_IP:
      case LWTUNNEL_ENCAP_IP6:
         return {{}, ipEncap(encap)};
      default:
         return {};
   }
}

IpTunnelEncap deviceEncap(std::string_view kind, Bytes data) {
   auto const* const found = std::ranges::find(tunnelKinds, kind, &TunnelKind::name);
   if (found == tunnelKinds.end()) {
      return {};
   }
   IpTunnelEncap header;
   header.type = found->type;
   forEachAttribute(data, [&](Attribute const& attribute) { takeTunnelAttribute(header, *found, attribute); });
   return header;
}

}  // namespace kernel
