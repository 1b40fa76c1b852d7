#pragma once

#include "programs/kiv/Command.h"
#include "programs/kiv/SorterArguments.h"
#include "state/Inputs.h"

#include <vector>

// What the clauses of a command about routes ask for. Throws std::runtime_error for a VRF, an interface or a nexthop
// group that there is not.
namespace kiv {

// All VRFs in the order in which they are shown: the default one first, then by name.
std::vector<state::Inputs::Vrf> vrfsInOrder(state::Inputs const& inputs);
// One of them or all.
std::vector<state::Inputs::Vrf> requestedVrfs(state::Inputs const& inputs, Request const& request);

// The library's types have to be registered.
template <class Prefix>
RouteQuery<Prefix> requestedRoutes(state::Inputs const& inputs, Request const& request);
extern template RouteQuery<Lumen::Prefix> requestedRoutes(state::Inputs const& inputs, Request const& request);
extern template RouteQuery<Lumen::Ip6Prefix> requestedRoutes(state::Inputs const& inputs, Request const& request);

}  // namespace kiv
