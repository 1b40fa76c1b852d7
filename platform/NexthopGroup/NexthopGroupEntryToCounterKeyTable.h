#pragma once

#include "FlexCounters/ChipMask.h"
#include "Routing/NexthopGroup/NexthopGroupId.h"
#include "Vault/TableEntity.h"
#include "Zam/Error.h"
#include "Zam/Export.h"

#include <string>
#include <string_view>

// Which flexible counter counts the traffic of which entry of which nexthop group, in shared memory. Written by the
// forwarding agent.
namespace Routing::NexthopGroup {

// The path at which a state has the table.
inline constexpr std::string_view counterKeyTablePath = "tunnel/nexthop/counterkeyinfo";

// A counter and the chips that have it. No counter is on no chip, so the default stands for none.
struct CounterKeyInfo {
   U64 counterIndex = 0;
   FlexCounters::ChipMask chipMask{};

   bool operator==(CounterKeyInfo const&) const = default;
};

struct CounterKeyKey {
   NexthopGroupId groupId;
   U32 entry;

   bool operator==(CounterKeyKey const&) const noexcept = default;
};

struct CounterKeyRecord {
   using Key = CounterKeyKey;
   using Element = void;
   static constexpr std::string_view name = "Routing::NexthopGroup::CounterKey";
   static constexpr std::string_view fields = "groupId:U32 entry:U32 counterIndex:U64 chips:U64";

   Key key;
   U64 counterIndex;
   U64 chips;

   bool isPossible() const noexcept { return key.groupId != 0; }
};
static_assert(Vault::TableRecord<CounterKeyRecord> && sizeof(CounterKeyRecord) == 24);

template <class Core>
class BasicCounterKeyTable : public Vault::TableEntity<Core> {
 public:
   using Vault::TableEntity<Core>::TableEntity;

   U32 entries() const { return this->core_.live(); }

   // The default when the entry has no counter. CorruptionError when the index is broken.
   CounterKeyInfo counterKeyInfo(NexthopGroupId groupId, U32 entry) const {
      CounterKeyRecord record;
      if (!this->core_.find({groupId, entry}, record)) {
         return {};
      }
      return {record.counterIndex, {{}, record.chips}};
   }
};

class KIV_EXPORT NexthopGroupEntryToCounterKeyTable final
    : public BasicCounterKeyTable<Vault::Table<CounterKeyRecord>> {
 public:
   using BasicCounterKeyTable::BasicCounterKeyTable;
   std::string_view fwkType() const noexcept override {
      return "Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable";
   }
};

class KIV_EXPORT NexthopGroupEntryToCounterKeyTableWriter final
    : public BasicCounterKeyTable<Vault::TableWriter<CounterKeyRecord>> {
 public:
   using BasicCounterKeyTable::BasicCounterKeyTable;
   std::string_view fwkType() const noexcept override {
      return "Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTableWriter";
   }

   // RangeError for the group 0; TableFull when there is no room.
   void counterKeyInfoIs(NexthopGroupId groupId, U32 entry, CounterKeyInfo const& info) {
      if (groupId == 0) {
         throw Zam::RangeError("Routing::NexthopGroup::CounterKey::groupId == 0 not allowed");
      }
      core_.recordIs({.key = {groupId, entry}, .counterIndex = info.counterIndex, .chips = info.chipMask.chips});
   }
   // False when there was none.
   bool counterKeyInfoDel(NexthopGroupId groupId, U32 entry) { return core_.recordDel({groupId, entry}); }
};

}  // namespace Routing::NexthopGroup
