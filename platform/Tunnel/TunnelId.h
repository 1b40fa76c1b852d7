#pragma once

#include "Zam/Int.h"

namespace Tunnel {

// The protocol that set a tunnel up. The numbers are part of every tunnel id. As wide as they can get: a number without
// a name stays what it is.
enum class TunnelType : U32 {
   unknown = 0,
   staticTunnel = 1,
   ldp = 2,
   bgpLu = 3,
   isisSr = 4,
   isisFlexAlgo = 5,
   rsvpLer = 6,
   srTePolicy = 7,
   evpnVxlan = 9,
   nexthopGroup = 11,
};

// A tunnel's type above its index within the type, which has 44 bits. 0 is no tunnel.
using TunnelId = U64;
inline constexpr unsigned tunnelIndexBits = 44;

constexpr TunnelType tunnelType(TunnelId tunnelId) noexcept {
   return static_cast<TunnelType>(tunnelId >> tunnelIndexBits);
}
constexpr U64 tunnelIndex(TunnelId tunnelId) noexcept {
   return tunnelId & ((TunnelId{1} << tunnelIndexBits) - 1);
}
constexpr TunnelId tunnelIdOf(TunnelType type, U64 index) noexcept {
   return TunnelId{static_cast<U32>(type)} << tunnelIndexBits | tunnelIndex(index);
}

}  // namespace Tunnel
