#pragma once

#include "Kiv/CliRdAssignmentChecker.h"
#include "Kiv/KivIpRouteCliHelper.h"
#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/config/AddressAssignmentChecker.h"
#include "Kiv/config/ProtocolCodeWordHelper.h"
#include "Kiv/config/StaticRoutesCliSaver.h"
#include "Kiv/config/StaticRoutesRibCommon.h"
#include "Kiv/nexthopgroup/NexthopGroupDetailHelper.h"
#include "Kiv/nexthopgroup/NexthopGroupMappingHelper.h"
#include "Kiv/nexthopgroup/NexthopGroupSize.h"
#include "Kiv/nexthopgroup/NexthopGroupSummaryHelper.h"
#include "Kiv/routedisplay/FilteredRoutes.h"
#include "Kiv/routedisplay/RouteSorter.h"
#include "Kiv/selection/RouteFilter.h"
#include "Kiv/summary/RouteSummary.h"
#include "Zam/Export.h"

// The library's front door. A command handler registers the types once, constructs one of them by name through
// Zam::TypeRegistry (or with its factory), hands it read-only tables and calls one operation, which writes the whole
// output of the command to a file descriptor.
namespace Kiv {

// Makes the library's types known to the type runtime. Registering again changes nothing.
KIV_EXPORT void registerTypes();

}  // namespace Kiv
