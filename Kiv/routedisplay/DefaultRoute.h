#pragma once

#include "Kiv/routedisplay/RouteSorter.h"
#include "cliprint/RendererV2.h"

namespace Kiv {

// The gateway of last resort, which precedes every route table; in the model it opens the object "routes", which the
// walk over the routes fills and closes. The default route is printed here only: it is taken out of the selection.
template <class Family>
void printDefaultRoute(RouteSorterOf<Family>& sorter, cliprint::RendererV2& renderer);

}  // namespace Kiv
