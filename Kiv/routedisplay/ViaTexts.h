#pragma once

#include "Kiv/routedisplay/CachedFec.h"
#include "Kiv/routedisplay/RouteSorter.h"
#include "Tunnel/CliSupport/TunnelResolver.h"

#include <string_view>

namespace Kiv {

// Fills what a FEC prints for its vias, in display order: texts, labels, tunnels, policies.
template <class Family>
void prepareViaTexts(RouteSorterOf<Family> const& sorter, Tunnel::CliSupport::TunnelResolver& tunnels, CachedFec& fec);

// The tables that tell the sorter of tunnels.
template <class Family>
Tunnel::CliSupport::TunnelSources tunnelSources(RouteSorterOf<Family> const& sorter);

// The name of a via's interface, or what stands in its place.
Zam::String interfaceText(CachedVia const& via);

// Whether a next hop's text says that the destination itself is on the link: the unspecified address.
bool isDirectlyConnected(std::string_view nexthop);

}  // namespace Kiv
