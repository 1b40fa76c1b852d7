#pragma once

#include "FlexCounters/FeatureId.h"
#include "Vault/TableEntity.h"
#include "Zam/Export.h"

#include <optional>
#include <string>
#include <string_view>

// The flexible counters of a feature, in shared memory: packets and bytes by the index of the counter. A table belongs
// to one unit, or to all of them (allUnits), and then holds the sums over the chips that have the counter. A table of
// the same kind beside it, the snapshot, holds what was counted when the counters were last cleared.
namespace FlexCounters {

inline constexpr U32 allUnits = ~U32{0};

// Where a state has the tables.
inline std::string counterTablePath(FeatureId featureId, U32 unit) {
   return "flexCounters/counterTable/" + stringValue(featureId) + "/" + std::to_string(unit);
}
inline std::string snapshotTablePath(FeatureId featureId, U32 unit) {
   return "flexCounters/snapshotTable/" + stringValue(featureId) + "/" + std::to_string(unit);
}

struct Counter {
   U64 packets = 0;
   U64 bytes = 0;

   bool operator==(Counter const&) const = default;
};

struct CounterKey {
   U64 counterIndex;

   bool operator==(CounterKey const&) const noexcept = default;
};

struct CounterRecord {
   using Key = CounterKey;
   using Element = void;
   static constexpr std::string_view name = "FlexCounters::Counter";
   static constexpr std::string_view fields = "counterIndex:U64 packets:U64 bytes:U64";

   Key key;
   U64 packets;
   U64 bytes;

   bool isPossible() const noexcept { return true; }
};
static_assert(Vault::TableRecord<CounterRecord> && sizeof(CounterRecord) == 24);

template <class Core>
class BasicCounterTable : public Vault::TableEntity<Core> {
 public:
   using Vault::TableEntity<Core>::TableEntity;

   U32 counters() const { return this->core_.live(); }
   U32 capacity() const noexcept { return this->core_.file().shape().capacity; }

   // Packets and bytes of one moment; nothing when there is no such counter. CorruptionError when the index is broken.
   std::optional<Counter> counter(U64 counterIndex) const {
      CounterRecord record;
      if (!this->core_.find({counterIndex}, record)) {
         return std::nullopt;
      }
      return Counter{record.packets, record.bytes};
   }

   // Calls `visit(counterIndex, counter)` for every counter.
   template <class Visit>
   void walk(Visit&& visit) const {
      this->core_.walk([&](CounterRecord const& record) {
         visit(record.key.counterIndex, Counter{record.packets, record.bytes});
      });
   }
};

class KIV_EXPORT CounterTable final : public BasicCounterTable<Vault::Table<CounterRecord>> {
 public:
   using BasicCounterTable::BasicCounterTable;
   std::string_view fwkType() const noexcept override { return "FlexCounters::CounterTable"; }
};

class KIV_EXPORT CounterTableWriter final : public BasicCounterTable<Vault::TableWriter<CounterRecord>> {
 public:
   using BasicCounterTable::BasicCounterTable;
   std::string_view fwkType() const noexcept override { return "FlexCounters::CounterTableWriter"; }

   // TableFull when there is no room.
   void counterIs(U64 counterIndex, Counter const& counter) {
      core_.recordIs({.key = {counterIndex}, .packets = counter.packets, .bytes = counter.bytes});
   }
   // False when there was none.
   bool counterDel(U64 counterIndex) { return core_.recordDel({counterIndex}); }
};

}  // namespace FlexCounters
