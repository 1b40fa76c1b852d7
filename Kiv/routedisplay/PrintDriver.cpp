#include "Kiv/routedisplay/PrintDriver.h"

#include "Kiv/routedisplay/DefaultRoute.h"
#include "Kiv/routedisplay/OutputParts.h"
#include "Kiv/routedisplay/RouteRendering.h"
#include "Kiv/routedisplay/Selection.h"
#include "Zam/Clock.h"
#include "cliprint/AttrInfo.h"

namespace Kiv {

namespace {

using cliprint::RendererV2;

void addKernelWarning(RendererV2& renderer) {
   renderer.addFrills(
       "WARNING: Some of the routes are not programmed in     \n"
       "kernel, and they are marked with '%%'.                 \n");
}

// The routes of the table and those that only the route cache holds.
template <class Family>
U32 tableSize(RouteSorterOf<Family> const& sorter) {
   auto const& in = sorter.inputs();
   U64 size = in.routingStatus ? in.routingStatus->routes() : 0;
   walkRouteCache(sorter, [&size](auto const&, auto const&) { ++size; });
   return static_cast<U32>(size);
}

template <class Family>
void addTableHeader(RouteSorterOf<Family> const& sorter, RendererV2& renderer) {
   auto const& in = sorter.inputs();
   if (in.prefix.isNullPrefix()) {
      renderer.addFrills("Displaying %u of %u IPv6 routing table entries\n", sorter.selectedRoutes(),
                         tableSize(sorter));
   } else if (in.prefixHasMask) {
      renderer.addFrills("Routing entry for %s\n", in.prefix);
   } else {
      renderer.addFrills("Routing entry for %s\n", in.prefix.address());
   }
}

// The warnings, and in the model the flags that say the same.
template <class Family>
void addWarnings(RouteSorterOf<Family> const& sorter, RendererV2& renderer) {
   bool const hardwareWarning = hardwareUnprogrammed(sorter);
   bool const kernelWarning = sorter.kernelUnprogrammed();
   if (hardwareWarning) {
      addHardwareWarning(renderer);
   }
   if (kernelWarning) {
      addKernelWarning(renderer);
   }
   // The box belongs to the hardware warning; a kernel warning alone has none.
   if (hardwareWarning) {
      renderer.addFrills("%s", warningSeparator);
   }
   cliprint::BoolAttrInfo const disabled("routingDisabled", renderer, routingDisabled(sorter));
   cliprint::BoolAttrInfo const hardware("allRoutesProgrammedHardware", renderer, !hardwareWarning);
   cliprint::BoolAttrInfo const kernel("allRoutesProgrammedKernel", renderer, !kernelWarning);
   renderer.addAttributes("", disabled.getArg(), hardware.getArg(), kernel.getArg());
}

}  // namespace

template <class Family>
void formatOutput(RouteSorterOf<Family>& sorter, RendererV2& renderer) {
   double const printStartTime = Zam::currentTime();
   if constexpr (Family::hasTableHeader) {
      addTableHeader(sorter, renderer);
   }
   addWarnings(sorter, renderer);
   renderer.addFrills("%s\n", sorter.legend());
   printDefaultRoute(sorter, renderer);
   renderer.ioflush();
   RouteRendering<Family>(sorter, renderer).printRoutes(sorter.sortedRoute());
   if (renderer.isModel()) {
      renderer.endJsonDict();
   }
   renderer.addFrills("\n");
   addTimings(renderer, sorter.inputs().startTime, printStartTime);
}

template void formatOutput(RouteSorterOf<Ipv4>&, RendererV2&);
template void formatOutput(RouteSorterOf<Ipv6>&, RendererV2&);

}  // namespace Kiv
