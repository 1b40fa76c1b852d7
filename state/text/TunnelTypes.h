#pragma once

#include "state/text/Kinds.h"

#include <array>

namespace state {

constexpr U64 maxTunnelType = ~U64{0} >> Tunnel::tunnelIndexBits;
constexpr U64 maxTunnelIndex = (U64{1} << Tunnel::tunnelIndexBits) - 1;

// Of the types in tunnel ids, and of the tables with the tunnels of each type; policies have no such table.
inline constexpr auto tunnelTypeNames =
    std::to_array<Name<Tunnel::TunnelType>>({{"static", Tunnel::TunnelType::staticTunnel},
                                             {"ldp", Tunnel::TunnelType::ldp},
                                             {"bgpLu", Tunnel::TunnelType::bgpLu},
                                             {"isisSr", Tunnel::TunnelType::isisSr},
                                             {"isisFlexAlgo", Tunnel::TunnelType::isisFlexAlgo},
                                             {"rsvpLer", Tunnel::TunnelType::rsvpLer},
                                             {"srTePolicy", Tunnel::TunnelType::srTePolicy},
                                             {"evpnVxlan", Tunnel::TunnelType::evpnVxlan},
                                             {"nexthopGroup", Tunnel::TunnelType::nexthopGroup}});

using TunnelIndex = Number<U64, 0, maxTunnelIndex>;

}  // namespace state
