#pragma once

#include "Interface/AllIntfConfigDir.h"
#include "Kiv/config/RoutingConsts.h"
#include "Routing/RouteInput.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"
#include "Zam/Value.h"

#include <unordered_set>

namespace Kiv {

// Prints the static routes as they are configured, before any resolution: a table with the RIB's codes, or a model.
struct KIV_EXPORT StaticRoutesRibCommon : Zam::ValueType {
   // Filled by dump(), from all inputs.
   Zam::OrderedMap<Routing::RouteKey, Zam::Ptr<Routing::Route const>> sortedRoute{};
   // For the interfaces' descriptions; there are none without it.
   Zam::Ptr<Interface::AllIntfConfigDir const> allIntfConfig{};
   // Print the routes that were installed at run time (true), or those that are configured.
   bool dynamic = false;
   U32 fd = 0;
   U32 fmt = 0;
   // Print the routes with this tag; 0 prints all.
   U32 tag = 0;
   std::unordered_set<Zam::Ptr<Routing::RouteInput const>> routeInputConf{};

   static constexpr auto zamDescription() {
      return Zam::describe<StaticRoutesRibCommon>(
          "Kiv::StaticRoutesRibCommon", Zam::collection("sortedRoute", &StaticRoutesRibCommon::sortedRoute),
          Zam::attribute("allIntfConfig", &StaticRoutesRibCommon::allIntfConfig),
          Zam::attribute("dynamic", &StaticRoutesRibCommon::dynamic), Zam::attribute("fd", &StaticRoutesRibCommon::fd),
          Zam::attribute("fmt", &StaticRoutesRibCommon::fmt), Zam::attribute("tag", &StaticRoutesRibCommon::tag),
          Zam::collection("routeInputConf", &StaticRoutesRibCommon::routeInputConf));
   }

   void sortedRouteIs(Routing::RouteKey const& key, Zam::Ptr<Routing::Route const> route) {
      sortedRoute.insertOrReplace(key, std::move(route));
   }
   void sortedRouteDel(Routing::RouteKey const& key) { sortedRoute.erase(key); }
   void sortedRouteDelAll() noexcept { sortedRoute.clear(); }

   void routeInputConfIs(Zam::Ptr<Routing::RouteInput const> input) { routeInputConf.insert(std::move(input)); }
   void routeInputConfDel(Zam::Ptr<Routing::RouteInput const> const& input) { routeInputConf.erase(input); }
   void routeInputConfDelAll() noexcept { routeInputConf.clear(); }

   Zam::String legend() const;
   // Of a key that several inputs have, one route is shown. What an earlier call left in sortedRoute is shown as well:
   // take a fresh object for each output. Writes the whole output; names and tags that are the defaults are left out.
   // Returns 0, or the errno of what ended the output early: that of a write that failed, EINTR when the user
   // interrupted.
   int dump(RoutingConsts const& routingConsts);
};

}  // namespace Kiv
