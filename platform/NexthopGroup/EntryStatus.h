#pragma once

#include "Routing/NexthopGroup/NexthopGroupId.h"
#include "Routing/NexthopGroup/NexthopGroupName.h"
#include "Vault/TableEntity.h"
#include "Zam/Export.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>

// The nexthop groups that have an id, in shared memory: the id by name. Written by the nexthop group agent. Names are
// unique; ids need not be while a group is being renamed.
namespace NexthopGroup {

using Routing::NexthopGroup::NexthopGroupId;

// The path at which a state has the table.
inline constexpr std::string_view entryStatusPath = "nexthopGroup/entryStatus";

// A name, filled up with NULs.
struct EntryKey {
   alignas(U64) std::array<char, Routing::NexthopGroup::maxNameLength + 1> name;

   bool operator==(EntryKey const&) const noexcept = default;
   // Lives as long as the key.
   std::string_view text() const noexcept { return {name.data(), ::strnlen(name.data(), name.size())}; }
};

// Of a name that is one (Routing::NexthopGroup::isName).
inline EntryKey toKey(std::string_view name) noexcept {
   EntryKey key{};
   name.copy(key.name.data(), key.name.size());
   return key;
}

struct EntryRecord {
   using Key = EntryKey;
   using Element = void;
   static constexpr std::string_view name = "NexthopGroup::Entry";
   static constexpr std::string_view fields = "name:U8x128 id:U32 sum:U32";

   Key key;
   NexthopGroupId id;
   U32 sum;  // over the rest

   U32 sealed() const noexcept {
      EntryRecord unsummed = *this;
      unsummed.sum = 0;
      return static_cast<U32>(Vault::foldedSum(Vault::sumOf(unsummed)));
   }
   bool isWhole() const noexcept { return id != 0 && sum == sealed(); }
   bool isPossible() const noexcept {
      auto const text = key.text();
      return isWhole() && Routing::NexthopGroup::isName(text) && key == toKey(text);
   }
};
static_assert(Vault::TableRecord<EntryRecord> && sizeof(EntryRecord) == 136);

template <class Core>
class BasicEntryStatus : public Vault::TableEntity<Core> {
 public:
   using Vault::TableEntity<Core>::TableEntity;

   U32 entries() const { return this->core_.live(); }

   // 0 when there is no group of that name. CorruptionError when the index or the group's row is broken.
   NexthopGroupId nexthopGroupNameToId(std::string_view name) const {
      EntryRecord record;
      if (!Routing::NexthopGroup::isName(name) || !this->core_.find(toKey(name), record)) {
         return 0;
      }
      return checked(record, record.isWhole()).id;  // what was looked for is a name
   }

   // Calls `visit(name, id)` for every group, in no order. An impossible row is reported and left out.
   template <class Visit>
   void walk(Visit&& visit) const {
      this->core_.walk(
          [&](EntryRecord const& record) { visit(checked(record, record.isPossible()).key.text(), record.id); });
   }

 private:
   EntryRecord const& checked(EntryRecord const& record, bool isPossible) const {
      if (!isPossible) [[unlikely]] {
         this->core_.file().corrupted("damaged nexthop group, id", record.id);
      }
      return record;
   }
};

class KIV_EXPORT EntryStatus final : public BasicEntryStatus<Vault::Table<EntryRecord>> {
 public:
   using BasicEntryStatus::BasicEntryStatus;
   std::string_view fwkType() const noexcept override { return "NexthopGroup::EntryStatus"; }
};

class KIV_EXPORT EntryStatusWriter final : public BasicEntryStatus<Vault::TableWriter<EntryRecord>> {
 public:
   using BasicEntryStatus::BasicEntryStatus;
   std::string_view fwkType() const noexcept override { return "NexthopGroup::EntryStatusWriter"; }

   // RangeError for what is no name and for the id 0; TableFull when there is no room.
   void nexthopGroupIdIs(std::string_view name, NexthopGroupId id) {
      if (id == 0) {
         throw Zam::RangeError("NexthopGroup::Entry::id == 0 not allowed");
      }
      EntryRecord record{.key = toKey(Routing::NexthopGroup::checkedName(name)), .id = id, .sum = 0};
      record.sum = record.sealed();
      core_.recordIs(record);
   }
   // False when there was none.
   bool nexthopGroupIdDel(std::string_view name) {
      return Routing::NexthopGroup::isName(name) && core_.recordDel(toKey(name));
   }
   // Entries that the writer before this one had left unfinished.
   U32 repaired() const noexcept { return core_.repaired(); }
};

}  // namespace NexthopGroup
