#pragma once

#include "Lumen/IpGenAddr.h"
#include "Zam/Int.h"
#include "Zam/Value.h"

#include <array>

namespace Tunnel {

enum class IpEncapType : U8 { none = 0, ipInIp = 1, gre = 2, vxlan = 3, udp = 4 };

constexpr auto zamEnumerators(IpEncapType) {
   using enum IpEncapType;
   return std::to_array<Zam::Enumerator<IpEncapType>>(
       {{none, "none"}, {ipInIp, "ipInIp"}, {gre, "gre"}, {vxlan, "vxlan"}, {udp, "udp"}});
}

// The outer header that a tunnel puts in front of a packet. Present exactly when it has a type.
struct IpTunnelEncap : Zam::ValueType {
   IpEncapType type = IpEncapType::none;
   Lumen::IpGenAddr source;
   Lumen::IpGenAddr destination;
   U32 key = 0;  // of GRE, or the VNI of VXLAN; 0 is none
   U8 ttl = 0;   // 0 takes the packet's own
   U8 tos = 0;   // likewise

   explicit operator bool() const noexcept { return type != IpEncapType::none; }

   static constexpr auto zamDescription() {
      return Zam::describe<IpTunnelEncap>(
          "Tunnel::IpTunnelEncap", Zam::attribute("type", &IpTunnelEncap::type),
          Zam::attribute("source", &IpTunnelEncap::source), Zam::attribute("destination", &IpTunnelEncap::destination),
          Zam::attribute("key", &IpTunnelEncap::key), Zam::attribute("ttl", &IpTunnelEncap::ttl),
          Zam::attribute("tos", &IpTunnelEncap::tos));
   }
};

}  // namespace Tunnel
