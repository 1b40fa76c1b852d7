#pragma once

#include "programs/kiv/RequestedPrefix.h"
#include "state/Inputs.h"

#include <any>
#include <string>
#include <vector>

namespace kiv {

// What the user asks of a route table.
template <class Prefix>
struct RouteQuery {
   RequestedPrefix<Prefix> requested{};  // the null prefix for all routes
   std::string protocol{};               // protocol code, empty for all
   bool showHidden = false;
   bool hostRoutes = false;  // the host route table instead
   bool longerPrefixes = false;
   Zam::Ptr<Interface::IntfStatus const> intfStatus{};
   std::any filters{};  // a "Kiv::RouteFilterColl", or empty
};

// The inputs of a "Kiv::RouteSorter" and of a "Kiv::Route6Sorter", in their constructors' order.
std::vector<std::any> sorterArguments(state::Inputs& inputs, state::Inputs::Vrf const& vrf,
                                      RouteQuery<Lumen::Prefix> const& query);
std::vector<std::any> sorterArguments(state::Inputs& inputs, state::Inputs::Vrf const& vrf,
                                      RouteQuery<Lumen::Ip6Prefix> const& query);

}  // namespace kiv
