#pragma once

#include "Kiv/routedisplay/CachedFec.h"
#include "Kiv/routedisplay/RouteSorter.h"

namespace Kiv {

// Fills the texts of the FEC's vias, in display order.
template <class Family>
void prepareViaTexts(RouteSorterOf<Family> const& sorter, CachedFec& fec);

// The name of a via's interface, or what stands in its place.
Zam::String interfaceText(CachedVia const& via);

}  // namespace Kiv
