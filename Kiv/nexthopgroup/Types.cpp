#include "Kiv/nexthopgroup/Types.h"

#include "Kiv/nexthopgroup/NexthopGroupDetailHelper.h"
#include "Kiv/nexthopgroup/NexthopGroupMappingHelper.h"
#include "Kiv/nexthopgroup/NexthopGroupSummaryHelper.h"
#include "Zam/TypeRegistry.h"

namespace Kiv {

namespace {

void registerCounters(Zam::TypeRegistry& registry) {
   registry.value<FlexCounters::ChipMask>();
   registry.value<CounterIndex>();
   registry.value<CounterEntry>();
   registry.entity<NexthopGroupCliCounterInterface>("Kiv::NexthopGroupCliCounterInterface")
       .operation("getCounters", &NexthopGroupCliCounterInterface::getCounters);
   registry.entity<NexthopGroupCounterHelper>("Kiv::NexthopGroupCounterHelper")
       .constructor(NexthopGroupCounterHelperIs)
       .attribute("counterKeyTable", &NexthopGroupCounterHelper::counterKeyTable,
                  &NexthopGroupCounterHelper::counterKeyTableIs)
       .attribute("counterTable", &NexthopGroupCounterHelper::counterTable, &NexthopGroupCounterHelper::counterTableIs)
       .attribute("snapshotTable", &NexthopGroupCounterHelper::snapshotTable,
                  &NexthopGroupCounterHelper::snapshotTableIs)
       .operation("mountCounterVaults", &NexthopGroupCounterHelper::mountCounterVaults)
       .operation("getCounters", &NexthopGroupCounterHelper::getCounters)
       .operation("counterIndex", &NexthopGroupCounterHelper::counterIndex);
}

}  // namespace

void registerNexthopGroupTypes() {
   auto& registry = Zam::TypeRegistry::instance();
   registerCounters(registry);
   registry.value<NexthopGroupSummaryHelper>()
       .operation("processNexthopGroups", &NexthopGroupSummaryHelper::processNexthopGroups)
       .operation("nhgCountInc", &NexthopGroupSummaryHelper::nhgCountInc)
       .operation("nhgUnprogrammedCountInc", &NexthopGroupSummaryHelper::nhgUnprogrammedCountInc)
       .operation("render", &NexthopGroupSummaryHelper::render);
   registry.value<NexthopGroupMappingHelper>().operation("render", &NexthopGroupMappingHelper::render);
   registry.value<NexthopGroupDetailHelper>().operation("render", &NexthopGroupDetailHelper::render);
}

}  // namespace Kiv
