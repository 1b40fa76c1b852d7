#pragma once

#include "Vault/Fib.h"
#include "Zam/Value.h"

#include <concepts>

// The textual form and the hash of routes, which are plain records and no described values: those of a description with
// the same attributes. The type of a route is a number in it, for a damaged table can hold any.
namespace Vault {

template <class Route>
struct RouteAttributes : Zam::ValueType {
   decltype(Route::prefix) prefix{};
   U8 routeType = 0;
   U8 preference = 0;
   U32 metric = 0;
   Vrf::VrfIdMap::VrfId srcVrfId = Vrf::VrfIdMap::noVrf;
   Fib::FecId fecId{};

   static constexpr auto zamDescription() {
      using A = RouteAttributes;
      return Zam::describe<A>(std::same_as<Route, Fib::Route> ? "Vault::Fib::Route" : "Vault::Fib6::Route",
                              Zam::attribute("prefix", &A::prefix, "Where it leads."),
                              Zam::attribute("routeType", &A::routeType, "The number of its type."),
                              Zam::attribute("preference", &A::preference, "The smallest wins."),
                              Zam::attribute("metric", &A::metric),
                              Zam::attribute("srcVrfId", &A::srcVrfId, "The VRF that it was leaked from, or none."),
                              Zam::attribute("fecId", &A::fecId, "The FEC that it is forwarded by."));
   }

   static RouteAttributes of(Route const& route) {
      return {
          {},         route.prefix, static_cast<U8>(route.routeType), route.preference, route.metric, route.srcVrfId,
          route.fecId};
   }
   Route route() const {
      return {.prefix = prefix,
              .routeType = static_cast<decltype(Route::routeType)>(routeType),
              .preference = preference,
              .metric = metric,
              .srcVrfId = srcVrfId,
              .fecId = fecId};
   }
};

template <class R>
concept AnyRoute = std::same_as<R, Fib::Route> || std::same_as<R, Fib6::Route>;

namespace Fib {
template <AnyRoute Route>
void strepAppend(std::string& out, Route const& route) {
   strepAppend(out, RouteAttributes<Route>::of(route));
}
template <AnyRoute Route>
void strepParse(Zam::StrepReader& in, Route& route) {
   RouteAttributes<Route> attributes;
   strepParse(in, attributes);
   route = attributes.route();
}
}  // namespace Fib

namespace Fib6 {
using Fib::strepAppend;
using Fib::strepParse;
}  // namespace Fib6

}  // namespace Vault

template <Vault::AnyRoute Route>
struct std::hash<Route> {
   std::size_t operator()(Route const& route) const { return Zam::hashOf(Vault::RouteAttributes<Route>::of(route)); }
};
