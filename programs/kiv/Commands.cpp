#include "programs/kiv/Commands.h"

#include "programs/kiv/Check.h"
#include "programs/kiv/Configure.h"
#include "programs/kiv/Follow.h"
#include "programs/kiv/Load.h"
#include "programs/kiv/NexthopGroups.h"
#include "programs/kiv/Program.h"
#include "programs/kiv/ShowConfiguration.h"
#include "programs/kiv/ShowRoute.h"
#include "programs/kiv/ShowSummary.h"

namespace kiv {

std::span<Command const> commands() {
   static auto const table = [] {
      std::vector<Command> all;
      for (auto const family :
           {routeCommands(), summaryCommands(), showConfigurationCommands(), staticRouteCommands(), configureCommands(),
            checkCommands(), nexthopGroupCommands(), loadCommands(), followCommands(), programCommands()}) {
         all.insert(all.end(), family.begin(), family.end());
      }
      return all;
   }();
   return table;
}

}  // namespace kiv
