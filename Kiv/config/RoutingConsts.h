#pragma once

#include "Routing/RouteKey.h"
#include "Zam/String.h"
#include "Zam/Value.h"

namespace Kiv {

// What a static route has that is configured without it. The caller knows the defaults of its system; those of a fresh
// object are the usual ones.
struct RoutingConsts : Zam::ValueType {
   Routing::RoutePreference defaultStaticRoutePreference = 1;
   U32 defaultStaticRouteTag = 0;
   Zam::String defaultStaticRouteName{};
   Routing::RouteMetric defaultStaticRouteMetric = 0;

   static constexpr auto zamDescription() {
      return Zam::describe<RoutingConsts>(
          "Kiv::RoutingConsts",
          Zam::attribute("defaultStaticRoutePreference", &RoutingConsts::defaultStaticRoutePreference),
          Zam::attribute("defaultStaticRouteTag", &RoutingConsts::defaultStaticRouteTag),
          Zam::attribute("defaultStaticRouteName", &RoutingConsts::defaultStaticRouteName),
          Zam::attribute("defaultStaticRouteMetric", &RoutingConsts::defaultStaticRouteMetric));
   }
};

}  // namespace Kiv
