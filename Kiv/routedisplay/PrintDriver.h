#pragma once

#include "Kiv/routedisplay/RouteSorter.h"
#include "cliprint/RendererV2.h"

// The whole output of one route command, in order.
namespace Kiv {

// Header, warnings, flags, legend, gateway of last resort, the routes, timings.
template <class Family>
void formatOutput(RouteSorterOf<Family>& sorter, cliprint::RendererV2& renderer);

// The host route table in its place.
template <class Family>
void formatHostRouteOutput(RouteSorterOf<Family>& sorter, cliprint::RendererV2& renderer);

}  // namespace Kiv
