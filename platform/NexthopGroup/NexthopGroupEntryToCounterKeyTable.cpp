#include "NexthopGroup/NexthopGroupEntryToCounterKeyTable.h"

#include "Zam/Error.h"

namespace Routing::NexthopGroup {

NexthopGroupEntryToCounterKeyTable::NexthopGroupEntryToCounterKeyTable(std::string path)
    : BasicCounterKeyTable(std::move(path)) {}

std::string_view NexthopGroupEntryToCounterKeyTable::fwkType() const noexcept {
   return "Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable";
}

NexthopGroupEntryToCounterKeyTableWriter::NexthopGroupEntryToCounterKeyTableWriter(std::string path)
    : BasicCounterKeyTable(std::move(path)) {}

NexthopGroupEntryToCounterKeyTableWriter::NexthopGroupEntryToCounterKeyTableWriter(std::string path,
                                                                                   Vault::TableFile::Sizes sizes)
    : BasicCounterKeyTable(std::move(path), sizes) {}

std::string_view NexthopGroupEntryToCounterKeyTableWriter::fwkType() const noexcept {
   return "Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTableWriter";
}

void NexthopGroupEntryToCounterKeyTableWriter::counterKeyInfoIs(NexthopGroupId groupId, U32 entry,
                                                                CounterKeyInfo const& info) {
   if (groupId == 0) {
      throw Zam::RangeError("Routing::NexthopGroup::CounterKey::groupId == 0 not allowed");
   }
   core_.recordIs({.key = {groupId, entry}, .counterIndex = info.counterIndex, .chips = info.chipMask.chips});
}

bool NexthopGroupEntryToCounterKeyTableWriter::counterKeyInfoDel(NexthopGroupId groupId, U32 entry) {
   return core_.recordDel({groupId, entry});
}

}  // namespace Routing::NexthopGroup
