#include "programs/kiv/ClearCounters.h"

#include "FlexCounters/CounterTable.h"
#include "Hive/EntityManager.h"
#include "programs/kiv/VrfOutput.h"
#include "state/ConfigFile.h"

#include <algorithm>

namespace kiv {

ExitStatus clearCounters(Request const& request) {
   using namespace FlexCounters;
   if (request.options.source.kind != SourceKind::stateDir) {
      throw UsageError("clear nexthop-group counters: command line: --state DIR should say where");
   }
   // Clears, loads and changes of the configuration wait for each other.
   state::StateDirLock const lock(request.options.source.path);
   Hive::EntityManager const manager(request.options.source.path);
   auto const counters = manager.mount<CounterTable>(counterTablePath(FeatureId::nexthopGroup, allUnits));
   // Without counters, an empty snapshot: those that come will begin at 0.
   U32 const capacity = counters ? std::max(counters->capacity(), U32{1}) : 1;
   manager.replace<CounterTableWriter>(
       snapshotTablePath(FeatureId::nexthopGroup, allUnits), {.capacity = capacity}, [&](CounterTableWriter& snapshot) {
          if (counters) {
             counters->walk([&](U64 index, Counter const& counter) { snapshot.counterIs(index, counter); });
          }
       });
   if (counters && counters->vanished() != 0) {
      report("counters: " + std::to_string(counters->vanished()) + " were being written and are not cleared");
      return ExitStatus::internal;
   }
   return checkedTable(counters, ExitStatus::ok);
}

}  // namespace kiv
