#include "Kiv/summary/Types.h"

#include "Kiv/summary/RouteSummary.h"
#include "Zam/TypeRegistry.h"

namespace Kiv {

namespace {

template <class Summary>
Zam::TypeBuilder<Summary> summaryType() {
   return Zam::TypeRegistry::instance()
       .value<Summary>()
       .operation("loadInternalStructures", &Summary::loadInternalStructures)
       .operation("loadAttachedRoutes", &Summary::loadAttachedRoutes)
       .operation("routeCountByTypeInc", &Summary::routeCountByTypeInc)
       .operation("routeCountByMaskInc", &Summary::routeCountByMaskInc)
       .operation("totalNumRoutesInc", &Summary::totalNumRoutesInc);
}

}  // namespace

void registerSummaryTypes() {
   summaryType<RouteSummary>().operation("loadRouteCacheRoutes", &RouteSummary::loadRouteCacheRoutes);
   summaryType<Route6Summary>();
}

}  // namespace Kiv
