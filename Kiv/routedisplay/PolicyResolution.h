#pragma once

#include "Kiv/routedisplay/CachedFec.h"
#include "Kiv/routedisplay/RouteSorter.h"
#include "Tunnel/CliSupport/TunnelResolver.h"

#include <vector>

namespace Kiv {

// The policies that these vias lead into, in the order of the vias. A tunnel that belongs to no policy shows as one
// without endpoint and color.
template <class Family>
PolicyInfoSet policyInfoSet(RouteSorterOf<Family> const& sorter, Tunnel::CliSupport::TunnelResolver& tunnels,
                            std::vector<PolicyVia> const& vias);

// What carries each class of traffic: one entry for each via of its FEC.
template <class Family>
CbfInfoSet cbfInfoSet(RouteSorterOf<Family> const& sorter, Tunnel::CliSupport::TunnelResolver& tunnels,
                      std::vector<CbfClassVias> const& classes);

}  // namespace Kiv
