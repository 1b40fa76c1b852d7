#include "Kiv/summary/Types.h"

#include "Kiv/summary/RouteSummary.h"
#include "Zam/TypeRegistry.h"

namespace Kiv {

namespace {

template <class Summary>
Zam::TypeBuilder<Summary> summaryType() {
   return Zam::TypeRegistry::instance()
       .value<Summary>()
       .told({{"routingConfig", "The routing configuration; nothing is counted of it."},
              {"routeList", "The configured static routes."},
              {"routeListDynamic", "The static routes that were added at run time."},
              {"routingStatus", "The VRF's routes in the FIB."},
              {"attachedRtStatus", "The hosts that were resolved on interfaces."},
              {"vrfIdMap", "The names of the VRFs."},
              {"vrfName", "The VRF that is counted."},
              {"routeCountByType", "Routes by summary category."},
              {"routeCountByMask", "Routes by prefix length."},
              {"totalNumRoutes", "All routes."}})
       .operation("loadInternalStructures", &Summary::loadInternalStructures, "Adds the routes of the FIB.")
       .operation("loadAttachedRoutes", &Summary::loadAttachedRoutes, "Adds the attached hosts.")
       .operation("routeCountByTypeInc", &Summary::routeCountByTypeInc, {"Adds to a category.", {"category", "count"}})
       .operation("routeCountByMaskInc", &Summary::routeCountByMaskInc, {"Adds to a length.", {"length", "count"}})
       .operation("totalNumRoutesInc", &Summary::totalNumRoutesInc, {"Adds to the total.", {"count"}});
}

}  // namespace

void registerSummaryTypes() {
   summaryType<RouteSummary>()
       .told({{"routeCacheConfig", "The route cache."}})
       .operation("loadRouteCacheRoutes", &RouteSummary::loadRouteCacheRoutes,
                  "Adds the routes of the route cache that the FIB does not hold.");
   summaryType<Route6Summary>();
}

}  // namespace Kiv
