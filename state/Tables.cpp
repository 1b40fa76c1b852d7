#include "state/StateDir.h"

#include "NexthopGroup/EntryStatus.h"
#include "NexthopGroup/NexthopGroupEntryToCounterKeyTable.h"
#include "Vault/Extents.h"
#include "Vault/ForwardingStatus.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/RouteStatus.h"
#include "Vault/UnprogrammedRouteStatus.h"
#include "state/Interrupts.h"

#include <algorithm>

namespace state {
namespace {

// Some room to grow, for a daemon that goes on with the table; it costs nothing until it is used.
U32 capacityFor(std::size_t records) {
   return static_cast<U32>(records + records / 8 + 64);
}

// Room for the vias as they are laid out, however many of them a FEC has.
template <class Fecs>
U32 arenaFor(Fecs const& fecs) {
   U64 vias = 0;
   for (auto const& fec : fecs) {
      vias +=
          Vault::Extents::sizeOf(static_cast<U32>(std::clamp<std::size_t>(fec.vias.size(), 1, Vault::Fib::maxVias)));
   }
   U64 const room = vias + vias / 8 + U64{4} * Vault::Extents::maxCount;
   return static_cast<U32>(std::min<U64>(room, Vault::maxArenaCapacity));
}

template <class Writer, class Fecs>
void writeFecs(Hive::EntityManager const& manager, std::string_view path, Fecs const& fecs) {
   auto const writer = manager.create<Writer>(
       path, Vault::TableFile::Sizes{.capacity = capacityFor(fecs.size()), .arenaCapacity = arenaFor(fecs)});
   for (auto const& fec : fecs) {
      endWhenInterrupted();
      writer->fecIs(fec);
   }
}

template <class Writer, class Routes>
void writeRoutes(Hive::EntityManager const& manager, std::string const& path, Routes const& routes) {
   auto const writer = manager.create<Writer>(path, capacityFor(routes.size()));
   for (auto const& route : routes) {
      endWhenInterrupted();
      writer->routeIs(route);
   }
}

// Routes of all VRFs, and a row of counts for each.
template <class Writer, class Put>
void writeUnprogrammed(Hive::EntityManager const& manager, std::string_view path, State const& state,
                       std::vector<UnprogrammedRoute> VrfState::*routes, Put&& put) {
   std::size_t rows = state.vrfs.size();
   for (VrfState const& vrf : state.vrfs) {
      rows += (vrf.*routes).size();
   }
   auto const writer = manager.create<Writer>(path, capacityFor(rows));
   for (VrfState const& vrf : state.vrfs) {
      for (UnprogrammedRoute const& route : vrf.*routes) {
         put(*writer, vrf.id, route);
      }
   }
}

// Counters are numbered as they are listed.
void writeCounters(State const& state, Hive::EntityManager const& manager) {
   using FlexCounters::CounterTableWriter;
   constexpr auto feature = FlexCounters::FeatureId::nexthopGroup;
   auto const& counters = state.nexthopGroupCounters;
   U32 const capacity = capacityFor(counters.size());
   auto const keys = manager.create<Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTableWriter>(
       Routing::NexthopGroup::counterKeyTablePath, capacity);
   auto const current =
       manager.create<CounterTableWriter>(FlexCounters::counterTablePath(feature, FlexCounters::allUnits), capacity);
   auto const cleared =
       manager.create<CounterTableWriter>(FlexCounters::snapshotTablePath(feature, FlexCounters::allUnits), capacity);
   for (U64 i = 0; i < counters.size(); ++i) {
      keys->counterKeyInfoIs(counters[i].groupId, counters[i].entry, {i, {{}, counters[i].chips}});
      current->counterIs(i, counters[i].current);
      if (counters[i].cleared) {
         cleared->counterIs(i, *counters[i].cleared);
      }
   }
}

void writeNexthopGroups(State const& state, Hive::EntityManager const& manager) {
   auto const ids = manager.create<::NexthopGroup::EntryStatusWriter>(::NexthopGroup::entryStatusPath,
                                                                      capacityFor(state.nexthopGroups.size()));
   for (NexthopGroup const& group : state.nexthopGroups) {
      if (group.id != 0) {
         ids->nexthopGroupIdIs(group.name, group.id);
      }
   }
   writeCounters(state, manager);
}

}  // namespace

void writeTables(State const& state, Hive::EntityManager const& manager) {
   for (VrfState const& vrf : state.vrfs) {
      std::string const id = std::to_string(vrf.id);
      writeRoutes<Vault::Fib::RouteStatusWriter>(manager, "fib/route/" + id, vrf.routes);
      writeRoutes<Vault::Fib6::RouteStatusWriter>(manager, "fib6/route/" + id, vrf.routes6);
   }
   writeFecs<Vault::Fib::ForwardingStatusWriter>(manager, "fib/forwarding", state.fecs);
   writeFecs<Vault::Fib6::ForwardingStatusWriter>(manager, "fib6/forwarding", state.fecs6);
   writeFecs<Vault::Fib::ForwardingStatusWriter>(manager, "fib/policyForwarding", state.policyFecs);
   if (state.genericFib) {
      writeFecs<Vault::FibGen::ForwardingStatusWriter>(manager, "fibGen/forwarding", state.fecsGen);
   }
   writeNexthopGroups(state, manager);
   writeUnprogrammed<Vault::Fib::UnprogrammedRouteStatusWriter>(
       manager, "fib/unprogrammedRoute", state, &VrfState::hardwareUnprogrammed,
       [](auto& writer, VrfId vrfId, UnprogrammedRoute const& route) { writer.unprogrammedIs(vrfId, route.prefix); });
   writeUnprogrammed<Vault::KernelUnprogrammedRoute::UnprogrammedRouteWriter>(
       manager, "kernel/unprogrammedRoute", state, &VrfState::kernelUnprogrammed,
       [](auto& writer, VrfId vrfId, UnprogrammedRoute const& route) {
          writer.errorIs(vrfId, route.prefix, {route.error});
       });
}

}  // namespace state
