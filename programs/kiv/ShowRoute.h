#pragma once

#include "programs/kiv/RouteClauses.h"

namespace kiv {

// The routes of one VRF that are shown when they are asked for like this: what "show ip route" prints.
template <class Family>
Zam::Ptr<typename Family::Sorter> selectedRoutes(state::Inputs& inputs,
                                                 RouteArguments<typename Family::Prefix> const& asked);

// "show ip route", "show ipv6 route".
std::span<Command const> routeCommands();

}  // namespace kiv
