#include "Kiv/CliSupport.h"

#include "Kiv/PlatformTypes.h"
#include "Kiv/config/Types.h"
#include "Kiv/display/Types.h"
#include "Kiv/fecs/Types.h"
#include "Kiv/nexthopgroup/Types.h"
#include "Kiv/routedisplay/Types.h"
#include "Kiv/selection/Types.h"
#include "Kiv/summary/Types.h"

namespace Kiv {

void registerTypes() {
   registerPlatformTypes();
   registerFecTypes();
   registerDisplayTypes();
   registerSelectionTypes();
   registerConfigTypes();
   registerSorterTypes();
   registerSummaryTypes();
   registerNexthopGroupTypes();
}

}  // namespace Kiv
