#include "programs/kiv/NexthopGroups.h"

#include "FlexCounters/CounterTable.h"
#include "Hive/EntityManager.h"
#include "Kiv/CliSupport.h"
#include "programs/kiv/Vrfs.h"
#include "state/ConfigFile.h"

#include <algorithm>
#include <cerrno>
#include <limits>

namespace kiv {
namespace {

struct GroupArguments {
   bool summary = false;
   bool mapping = false;
   std::optional<U32> id{};
   std::optional<std::string> name{};
   std::optional<std::string> freeName{};
   std::string vrf{L3::VrfName::defaultVrf};
};

constexpr auto groupClauses = [] {
   using A = GroupArguments;
   // One group, one table of them, or all.
   return clauses(
       clause<&A::summary>({.keyword = "summary",
                            .help = "instead, how many there are, by type and by size",
                            .excludes = keys<&A::mapping, &A::id, &A::name, &A::freeName>}),
       clause<&A::mapping>({.keyword = "mapping",
                            .help = "instead, the name of each id",
                            .excludes = keys<&A::id, &A::name, &A::freeName>}),
       clause<&A::id, Number<1, std::numeric_limits<U32>::max()>>({.keyword = "id",
                                                                   .parameter = "N",
                                                                   .help = "the group of this id",
                                                                   .excludes = keys<&A::name, &A::freeName>}),
       clause<&A::name, NexthopGroupName>(
           {.keyword = "name", .help = "the group of this name, whatever it is", .excludes = keys<&A::freeName>}),
       clause<&A::freeName, NexthopGroupName>({.keyword = "", .help = "the same, of a name that begins no keyword"}),
       clause<&A::vrf, VrfName>(
           {.keyword = "vrf", .help = "as the hardware has them in this VRF, not in the default one"}));
}();

// Empty for any.
std::string requestedName(state::Inputs const& inputs, GroupArguments const& asked) {
   auto const& name = asked.name ? asked.name : asked.freeName;
   if (name && inputs.nexthopGroupConfig->nexthopGroup(Zam::String(*name)) == nullptr) {
      throw Refusal(*name, "no such nexthop group");
   }
   return name.value_or("");
}

bool hasGroup(state::Inputs const& inputs, U32 id) {
   bool has = false;
   if (inputs.nexthopGroupEntryStatus) {
      inputs.nexthopGroupEntryStatus->walk([&](std::string_view name, U32 each) {
         has = has || (each == id && inputs.nexthopGroupConfig->nexthopGroup(Zam::String(name)) != nullptr);
      });
   }
   return has;
}

// 0 for any.
U32 requestedId(state::Inputs const& inputs, GroupArguments const& asked) {
   if (!asked.id || hasGroup(inputs, *asked.id)) {
      return asked.id.value_or(0);
   }
   auto const& groups = inputs.nexthopGroupEntryStatus;
   if (groups && groups->corruptions() != 0) {
      throw Vault::CorruptionError(groups->corruption());  // it may be in what cannot be read
   }
   throw Refusal(std::to_string(*asked.id), "no such nexthop group");
}

// What a display's answer means; errno tells why it is not complete.
ExitStatus statusOf(Session const& session, bool complete) {
   return session.ended(complete ? 0 : errno);
}

ExitStatus showSummary(Session const& session, state::Inputs const& inputs, L3::VrfName const& vrf) {
   Kiv::NexthopGroupSummaryHelper summary;
   summary.nhgConfig = inputs.nexthopGroupConfig;
   summary.nhgEntryStatus = inputs.nexthopGroupEntryStatus;
   summary.nhgHwStatus = inputs.nexthopGroupHardwareStatus;
   summary.routingHwStatus = inputs.routingHardwareStatus;
   summary.vrfName = vrf;
   summary.processNexthopGroups();
   return statusOf(session, summary.render(static_cast<U32>(session.output()), session.format()));
}

ExitStatus showMapping(Session const& session, state::Inputs const& inputs) {
   Kiv::NexthopGroupMappingHelper mapping;
   mapping.nhgConfig = inputs.nexthopGroupConfig;
   mapping.nhgEntryStatus = inputs.nexthopGroupEntryStatus;
   return statusOf(session, mapping.render(static_cast<U32>(session.output()), session.format()));
}

ExitStatus showDetail(Session const& session, state::Inputs& inputs, GroupArguments const& asked,
                      L3::VrfName const& vrf) {
   Kiv::NexthopGroupDetailHelper detail;
   detail.nhgConfig = inputs.nexthopGroupConfig;
   detail.nhgEntryStatus = inputs.nexthopGroupEntryStatus;
   detail.nhgHwStatus = inputs.nexthopGroupHardwareStatus;
   detail.routingHwStatus = inputs.routingHardwareStatus;
   detail.vrfName = vrf;
   detail.nhgName = requestedName(inputs, asked);
   detail.nhgId = requestedId(inputs, asked);
   auto const counters = inputs.nexthopGroupCounters();
   detail.counterHelper = counters;
   ExitStatus status = statusOf(session, detail.render(static_cast<U32>(session.output()), session.format()));
   for (auto const& error : counters->mountErrors()) {
      session.report(error.bytes());
      status = status == ExitStatus::ok ? ExitStatus::internal : status;
   }
   return status;
}

ExitStatus showNexthopGroup(Session& session, GroupArguments const& asked) {
   state::Inputs inputs = session.inputs();
   auto const vrf = requestedVrf(inputs, asked.vrf).name;
   return asked.summary   ? showSummary(session, inputs, vrf)
          : asked.mapping ? showMapping(session, inputs)
                          : showDetail(session, inputs, asked, vrf);
}

// Makes the counters of nexthop groups start again: what they have counted becomes their snapshot, all at once.
ExitStatus clearCounters(Session& session, NoArguments const&) {
   using namespace FlexCounters;
   std::string const& stateDir = session.stateDir("clear nexthop-group counters", "where");
   // Clears, loads and changes of the configuration wait for each other.
   state::StateDirLock const lock(stateDir);
   Hive::EntityManager const manager(stateDir);
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
      session.report("counters: " + std::to_string(counters->vanished()) + " were being written and are not cleared");
      return ExitStatus::internal;
   }
   return ExitStatus::ok;
}

constexpr auto groupTable = std::to_array<Command>({
    display<showNexthopGroup>("show nexthop-group", "all nexthop groups with their entries and counters", groupClauses),
    command<clearCounters>("clear nexthop-group counters", "let the counters in the state directory start again from 0",
                           noClauses),
});

}  // namespace

std::span<Command const> nexthopGroupCommands() {
   return groupTable;
}

}  // namespace kiv
