#include "Kiv/nexthopgroup/Types.h"

#include "Kiv/nexthopgroup/NexthopGroupDetailHelper.h"
#include "Kiv/nexthopgroup/NexthopGroupMappingHelper.h"
#include "Kiv/nexthopgroup/NexthopGroupSummaryHelper.h"
#include "Zam/TypeRegistry.h"

namespace Kiv {

namespace {

void registerCounters(Zam::TypeRegistry& registry) {
   registry.value<CounterIndex>().told(
       {{"counterIndex", "Of the counter in its table."}, {"chipMask", "The chips that have it."}});
   registry.value<CounterEntry>().told({{"packets", "Since the last clear."}, {"bytes", "Since the last clear."}});
   registry.entity<NexthopGroupCliCounterInterface>("Kiv::NexthopGroupCliCounterInterface")
       .operation("getCounters", &NexthopGroupCliCounterInterface::getCounters,
                  {"What a counter has counted.", {"index"}});
   registry.entity<NexthopGroupCounterHelper>("Kiv::NexthopGroupCounterHelper")
       .constructor(NexthopGroupCounterHelperIs)
       .attribute("counterKeyTable", &NexthopGroupCounterHelper::counterKeyTable,
                  &NexthopGroupCounterHelper::counterKeyTableIs, "Which counter counts which entry.")
       .attribute("counterTable", &NexthopGroupCounterHelper::counterTable, &NexthopGroupCounterHelper::counterTableIs,
                  "What was counted.")
       .attribute("snapshotTable", &NexthopGroupCounterHelper::snapshotTable,
                  &NexthopGroupCounterHelper::snapshotTableIs, "What had been counted at the last clear.")
       .view("mountErrors", &NexthopGroupCounterHelper::mountErrors, "What is wrong with tables that are left out.")
       .operation("mountCounterVaults", &NexthopGroupCounterHelper::mountCounterVaults,
                  {"Attaches the three tables.", {"entityManager"}})
       .operation("getCounters", &NexthopGroupCounterHelper::getCounters,
                  {"What an entry has carried since the last clear.", {"groupId", "entry"}})
       .operation("counterIndex", &NexthopGroupCounterHelper::counterIndex,
                  {"The counter of an entry.", {"groupId", "entry"}});
}

constexpr std::string_view programmedLine = "What the hardware forwards by, by VRF.";
constexpr std::string_view capabilitiesLine = "What the hardware can hold.";
constexpr std::string_view vrfLine = "The VRF whose hardware is asked.";

template <class Display>
Zam::TypeBuilder<Display> groupDisplay() {
   return Zam::TypeRegistry::instance()
       .value<Display>()
       .told({{"nhgConfig", "The configured groups."}, {"nhgEntryStatus", "The ids of the groups."}})
       .operation("render", &Display::render, {"Prints; false when the output is not complete.", {"fd", "fmt"}});
}

}  // namespace

void registerNexthopGroupTypes() {
   auto& registry = Zam::TypeRegistry::instance();
   registerCounters(registry);
   groupDisplay<NexthopGroupSummaryHelper>()
       .told({{"nhgCount", "Configured groups."},
              {"nhgUnprogrammedCount", "Groups that the VRF's hardware does not forward by."},
              {"nhgPerType", "Groups by type."},
              {"nhgPerSize", "Groups by size."},
              {"nhgHwStatus", programmedLine},
              {"routingHwStatus", capabilitiesLine},
              {"vrfName", vrfLine}})
       .operation("processNexthopGroups", &NexthopGroupSummaryHelper::processNexthopGroups, "Counts the groups.")
       .operation("nhgCountInc", &NexthopGroupSummaryHelper::nhgCountInc, {"Adds to nhgCount.", {"count"}})
       .operation("nhgUnprogrammedCountInc", &NexthopGroupSummaryHelper::nhgUnprogrammedCountInc,
                  {"Adds to nhgUnprogrammedCount.", {"count"}});
   groupDisplay<NexthopGroupMappingHelper>().told({{"nhgIdName", "Names by id, filled by render()."}});
   groupDisplay<NexthopGroupDetailHelper>().told(
       {{"nhgHwStatus", programmedLine},
        {"routingHwStatus", capabilitiesLine},
        {"counterHelper", "Finds the counters; without it they are 0."},
        {"counterInterface", "Tells what they have counted in place of the helper's tables."},
        {"vrfName", vrfLine},
        {"nhgName", "The group to show, empty for any."},
        {"nhgId", "The id of groups to show, 0 for any."}});
}

}  // namespace Kiv
