#pragma once

#include "Tunnel/CliSupport/CachedTunVia.h"
#include "Tunnel/CliSupport/SortedTunViaSet.h"
#include "Zam/Value.h"

// The textual form of what displays know of tunnels: a way by its attributes, an outer header as what it is made of.
namespace Tunnel::CliSupport {

struct ViaAttributes : Zam::ValueType {
   Lumen::IntfId intfId{};
   Lumen::IpGenAddr hop{};
   TunnelFib::EncapId encapId = 0;
   U32 weight = 1;

   static constexpr auto zamDescription() {
      using A = ViaAttributes;
      return Zam::describe<A>("Tunnel::CliSupport::SortedTunVia",
                              Zam::attribute("intfId", &A::intfId, "What it leaves through."),
                              Zam::attribute("hop", &A::hop, "The next hop."),
                              Zam::attribute("encapId", &A::encapId, "The label stack that it puts on."),
                              Zam::attribute("weight", &A::weight, "Its share."));
   }

   static ViaAttributes of(SortedTunVia const& via) { return {{}, via.intfId, via.hop, via.encapId, via.weight}; }
   SortedTunVia via() const { return {.intfId = intfId, .hop = hop, .encapId = encapId, .weight = weight}; }
};

inline void strepAppend(std::string& out, SortedTunVia const& via) {
   strepAppend(out, ViaAttributes::of(via));
}
inline void strepParse(Zam::StrepReader& in, SortedTunVia& via) {
   ViaAttributes attributes;
   strepParse(in, attributes);
   via = attributes.via();
}

inline void strepAppend(std::string& out, CachedIpTunnelInfo const& info) {
   strepAppend(out, info.encap());
}
inline void strepParse(Zam::StrepReader& in, CachedIpTunnelInfo& info) {
   IpTunnelEncap encap;
   strepParse(in, encap);
   info = CachedIpTunnelInfo(encap);
}

}  // namespace Tunnel::CliSupport

template <>
struct std::hash<Tunnel::CliSupport::CachedIpTunnelInfo> {
   std::size_t operator()(Tunnel::CliSupport::CachedIpTunnelInfo const& info) const {
      return Zam::hashOf(info.encap());
   }
};
