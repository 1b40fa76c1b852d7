#pragma once

#include "programs/state/Inputs.h"

#include <any>
#include <vector>

namespace kiv {

// What the user asks of a route table.
struct RouteQuery {
   std::string protocol{};
   bool showHidden = false;
   bool longerPrefixes = false;
};

// The inputs of a "Kiv::RouteSorter" and of a "Kiv::Route6Sorter", in their constructors' order.
std::vector<std::any> sorterArguments(state::Inputs& inputs, state::Inputs::Vrf const& vrf, RouteQuery const& query);
std::vector<std::any> sorter6Arguments(state::Inputs& inputs, state::Inputs::Vrf const& vrf, RouteQuery const& query);

}  // namespace kiv
