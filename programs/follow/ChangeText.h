#pragma once

#include "Vault/Fib.h"
#include "state/RouteTypeNames.h"
#include "state/Snapshot.h"

#include <optional>
#include <string>
#include <vector>

namespace follow {

// The vias of a route as JSON.
std::string viasText(std::vector<Vault::Fib::Via> const* vias);

// A route as JSON, "null" for none.
template <class Route>
std::string routeText(std::optional<Route> const& route, std::vector<Vault::Fib::Via> const* vias) {
   if (!route) {
      return "null";
   }
   auto const& names = state::routeTypeNames<decltype(Route::routeType)>;
   auto const name =
       std::ranges::find(names, route->routeType, &state::RouteTypeName<decltype(Route::routeType)>::type);
   return "{\"type\":\"" + std::string(name != names.end() ? name->name : "unknown") +
          "\",\"preference\":" + std::to_string(route->preference) + ",\"metric\":" + std::to_string(route->metric) +
          ",\"vias\":" + viasText(vias) + "}";
}

}  // namespace follow
