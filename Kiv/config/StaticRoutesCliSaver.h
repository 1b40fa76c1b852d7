#pragma once

#include "Kiv/config/NexthopInfo.h"
#include "Kiv/config/RoutingConsts.h"
#include "Kiv/values/RouteSortKey.h"
#include "Routing/RouteList.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"
#include "Zam/Value.h"

namespace Kiv {

// Turns the configured static routes of one list into the commands that configure them again, one line for a route or
// for each of its vias, in the order of RouteSortKey and of the vias. Routes installed at run time are left out.
//
// The routes are those that the list holds when save() begins; other activities may change it while save() lets them
// run. What an earlier call left in sortedRoute is saved as well: take a fresh saver for each list.
struct KIV_EXPORT StaticRoutesCliSaver : Zam::ValueType {
   Zam::OrderedMap<RouteSortKey, NexthopInfo> sortedRoute{};

   static constexpr auto zamDescription() {
      return Zam::describe<StaticRoutesCliSaver>("Kiv::StaticRoutesCliSaver",
                                                 Zam::collection("sortedRoute", &StaticRoutesCliSaver::sortedRoute));
   }

   void sortedRouteIs(RouteSortKey const& key, NexthopInfo info) { sortedRoute.insertOrReplace(key, std::move(info)); }
   void sortedRouteDel(RouteSortKey const& key) { sortedRoute.erase(key); }
   void sortedRouteDelAll() noexcept { sortedRoute.clear(); }

   // All lines, each with its newline. Every line begins with `routeCmd`, which brings its own trailing blank.
   // `saveAll` has preferences and tags written that are the defaults; not so names and metrics, which a route without
   // them does not have.
   Zam::String save(Zam::Ptr<Routing::RouteList const> const& routeList, bool saveAll, Zam::String const& routeCmd,
                    RoutingConsts const& routingConsts);
};

}  // namespace Kiv
