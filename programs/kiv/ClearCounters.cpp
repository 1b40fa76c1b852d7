#include "programs/kiv/ClearCounters.h"

#include "FlexCounters/CounterTable.h"
#include "Hive/EntityManager.h"
#include "programs/kiv/VrfOutput.h"

namespace kiv {

ExitStatus clearCounters(Request const& request) {
   using namespace FlexCounters;
   if (request.options.source.kind != SourceKind::stateDir) {
      throw UsageError("clear nexthop-group counters: command line: --state DIR should say where");
   }
   Hive::EntityManager const manager(request.options.source.path);
   auto const counters = manager.mount<CounterTable>(counterTablePath(FeatureId::nexthopGroup, allUnits));
   if (!counters) {
      return ExitStatus::ok;  // nothing has counted
   }
   manager.replace<CounterTableWriter>(
       snapshotTablePath(FeatureId::nexthopGroup, allUnits), {.capacity = counters->capacity()},
       [&](CounterTableWriter& snapshot) {
          counters->walk([&](U64 index, Counter const& counter) { snapshot.counterIs(index, counter); });
       });
   return checkedTable(counters, ExitStatus::ok);
}

}  // namespace kiv
