#pragma once

#include "Kiv/display/PolicyInfo.h"
#include "Kiv/fecs/FecStore.h"
#include "Tunnel/CliSupport/TunnelResolver.h"

#include <vector>

namespace Kiv {

using PolicyTable = Zam::Ptr<SrTePolicy::PolicyStatus const>;

// The policies that these vias lead into, in the order of the vias. A tunnel that belongs to no policy shows as one
// without endpoint and color.
PolicyInfoSet policyInfoSet(PolicyTable const& policyStatus, Tunnel::CliSupport::TunnelResolver& tunnels,
                            std::vector<PolicyVia> const& vias);

// What carries each class of traffic: one entry for each via of its FEC.
CbfInfoSet cbfInfoSet(PolicyTable const& policyStatus, Tunnel::CliSupport::TunnelResolver& tunnels,
                      std::vector<CbfClassVias> const& classes);

}  // namespace Kiv
