#include "Kiv/output/OutputParts.h"

#include "Zam/Clock.h"
#include "cliprint/AttrInfo.h"

namespace Kiv {

void addHardwareWarning(cliprint::RendererV2& renderer) {
   renderer.addFrills("%s", warningSeparator);
   renderer.addFrills(
       "WARNING: Some of the routes are not programmed in     \n"
       "hardware, and they are marked with '*'.               \n");
}

void addTimings(cliprint::RendererV2& renderer, double requestTime, double printStartTime) {
   if (requestTime == 0) {
      return;
   }
   cliprint::DoubleAttrInfo const quantify("quantify", renderer, Zam::currentTime() - requestTime);
   cliprint::DoubleAttrInfo const rsTime("rsTime", renderer, printStartTime - requestTime);
   renderer.addAttributes("Time taken for the routes to be printed: %f seconds.\n", quantify.getArg());
   renderer.addAttributes("Time taken to create the routeSorter: %f seconds.\n", rsTime.getArg());
}

}  // namespace Kiv
