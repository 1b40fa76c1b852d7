#include "Kiv/nexthopgroup/NexthopGroupCounterHelper.h"

#include "Kiv/common/SafeLookup.h"
#include "Kiv/common/Trace.h"
#include "Zam/Error.h"

namespace Kiv {

namespace {

using FlexCounters::FeatureId;

// Nothing when the table is damaged where the counter would be; a counter that is not there has counted nothing.
std::optional<FlexCounters::Counter> counterAt(FlexCounters::CounterTable const* table, U64 counterIndex) {
   if (table == nullptr) {
      return FlexCounters::Counter();
   }
   return safeLookup(table, [&](auto const& counters) {
      return std::optional(counters.counter(counterIndex).value_or(FlexCounters::Counter()));
   });
}

}  // namespace

NexthopGroupCounterHelper::~NexthopGroupCounterHelper() = default;

std::string_view NexthopGroupCounterHelper::fwkType() const noexcept {
   return "Kiv::NexthopGroupCounterHelper";
}

template <class Table>
bool NexthopGroupCounterHelper::mount(Zam::Ptr<Table const>& table, Hive::EntityManager const& manager,
                                      std::string_view path, std::string_view type) {
   table = nullptr;
   try {
      table = Zam::ptrCast<Table const>(manager.mountEntity(path, type));
   } catch (Vault::MountError const& error) {
      mountErrors_.emplace_back(error.what());
      return false;
   }
   return true;
}

void NexthopGroupCounterHelper::mountCounterVaults(Zam::Ptr<Hive::EntityManager const> const& entityManager) {
   Zam::assertThat(entityManager != nullptr, "entityManager", traceSource,
                   "void Kiv::NexthopGroupCounterHelper::mountCounterVaults()");
   constexpr auto feature = FeatureId::nexthopGroup;
   auto const& manager = *entityManager;
   mountErrors_.clear();
   mount(counterKeyTable_, manager, Routing::NexthopGroup::counterKeyTablePath,
         "Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable");
   isCounterTableReadable_ =
       mount(counterTable_, manager, FlexCounters::counterTablePath(feature, FlexCounters::allUnits),
             "FlexCounters::CounterTable");
   mount(snapshotTable_, manager, FlexCounters::snapshotTablePath(feature, FlexCounters::allUnits),
         "FlexCounters::CounterTable");
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
   if (!current || !isCounterTableReadable_) {
      return {};  // a difference to what cannot be read would be a huge number
   }
   auto const cleared = counterAt(snapshotTable_.get(), index.counterIndex).value_or(FlexCounters::Counter());
   return {{}, current->packets - cleared.packets, current->bytes - cleared.bytes};
}

Zam::Ptr<NexthopGroupCounterHelper> nexthopGroupCounterHelperFactory() {
   return Zam::makePtr<NexthopGroupCounterHelper>();
}

}  // namespace Kiv
