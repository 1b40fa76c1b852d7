#pragma once

#include "Kiv/common/PrintDocument.h"
#include "Kiv/common/SafeLookup.h"
#include "Kiv/routedisplay/RouteSorter.h"
#include "cliprint/RendererV2.h"

// What the route table and the host route table both print around their routes.
namespace Kiv {

inline constexpr char const* warningSeparator = "======================================================\n";

// Opens the box of the hardware warning; the caller closes it with the separator.
void addHardwareWarning(cliprint::RendererV2& renderer);

// Nothing for a request time of 0. "quantify" counts from the request, so it includes the creation of the sorter.
void addTimings(cliprint::RendererV2& renderer, double requestTime, double printStartTime);

// Whether routes of the VRF are missing from the hardware.
template <class Family>
bool hardwareUnprogrammed(RouteSorterOf<Family> const& sorter) {
   auto const count = safeLookup(sorter.inputs().unprogrammedRouteStatus.get(), [&](auto const& status) {
      return status.unprogrammedRouteCount(sorter.inputs().vrfId);
   });
   return count && count->count != 0;
}

// True also without a configuration.
template <class Family>
bool routingDisabled(RouteSorterOf<Family> const& sorter) {
   auto const& config = sorter.inputs().routingConfig;
   return !config || !config->routing();
}

}  // namespace Kiv
