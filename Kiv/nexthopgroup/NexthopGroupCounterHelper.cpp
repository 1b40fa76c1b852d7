#include "Kiv/nexthopgroup/NexthopGroupCounterHelper.h"

#include "Kiv/common/SafeLookup.h"

namespace Kiv {

namespace {

using FlexCounters::FeatureId;

// Null when there is nothing at the path.
template <class Table>
Zam::Ptr<Table const> mounted(Hive::EntityManager const& manager, std::string_view path, std::string_view type) {
   return Zam::ptrCast<Table const>(manager.mountEntity(path, type));
}

std::optional<FlexCounters::Counter> counterAt(FlexCounters::CounterTable const* table, U64 counterIndex) {
   return safeLookup(table, [&](auto const& counters) { return counters.counter(counterIndex); });
}

}  // namespace

NexthopGroupCounterHelper::~NexthopGroupCounterHelper() = default;

std::string_view NexthopGroupCounterHelper::fwkType() const noexcept {
   return "Kiv::NexthopGroupCounterHelper";
}

void NexthopGroupCounterHelper::mountCounterVaults(Zam::Ptr<Hive::EntityManager const> const& entityManager) {
   using KeyTable = Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable;
   constexpr auto feature = FeatureId::nexthopGroup;
   auto const counters = [&](std::string const& path) {
      return mounted<FlexCounters::CounterTable>(*entityManager, path, "FlexCounters::CounterTable");
   };
   counterKeyTable_ = mounted<KeyTable>(*entityManager, Routing::NexthopGroup::counterKeyTablePath,
                                        "Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable");
   counterTable_ = counters(FlexCounters::counterTablePath(feature, FlexCounters::allUnits));
   snapshotTable_ = counters(FlexCounters::snapshotTablePath(feature, FlexCounters::allUnits));
}

CounterIndex NexthopGroupCounterHelper::counterIndex(NexthopGroupId groupId, U32 entry) const {
   auto const info =
       safeLookup(counterKeyTable_.get(), [&](auto const& keys) { return keys.counterKeyInfo(groupId, entry); });
   return {{}, info.counterIndex, info.chipMask};
}

CounterEntry NexthopGroupCounterHelper::getCounters(NexthopGroupId groupId, U32 entry) const {
   auto const index = counterIndex(groupId, entry);
   if (!Zam::isSet(index)) {
      return {};
   }
   auto const current = counterAt(counterTable_.get(), index.counterIndex);
   if (!current) {
      return {};  // nothing was counted, or it cannot be read; a difference to it would be a huge number
   }
   auto const cleared = counterAt(snapshotTable_.get(), index.counterIndex).value_or(FlexCounters::Counter());
   return {{}, current->packets - cleared.packets, current->bytes - cleared.bytes};
}

Zam::Ptr<NexthopGroupCounterHelper> nexthopGroupCounterHelperFactory() {
   return Zam::makePtr<NexthopGroupCounterHelper>();
}

}  // namespace Kiv
