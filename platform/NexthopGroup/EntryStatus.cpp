#include "NexthopGroup/EntryStatus.h"

namespace NexthopGroup {

EntryStatus::EntryStatus(std::string path) : BasicEntryStatus(std::move(path)) {}

std::string_view EntryStatus::fwkType() const noexcept {
   return "NexthopGroup::EntryStatus";
}

EntryStatusWriter::EntryStatusWriter(std::string path) : BasicEntryStatus(std::move(path)) {}

EntryStatusWriter::EntryStatusWriter(std::string path, Vault::TableFile::Sizes sizes)
    : BasicEntryStatus(std::move(path), sizes) {}

std::string_view EntryStatusWriter::fwkType() const noexcept {
   return "NexthopGroup::EntryStatusWriter";
}

void EntryStatusWriter::nexthopGroupIdIs(std::string_view name, NexthopGroupId id) {
   if (id == 0) {
      throw Zam::RangeError("NexthopGroup::Entry::id == 0 not allowed");
   }
   core_.recordIs({.key = toKey(Routing::NexthopGroup::checkedName(name)), .id = id, .zero = 0});
}

bool EntryStatusWriter::nexthopGroupIdDel(std::string_view name) {
   return Routing::NexthopGroup::isName(name) && core_.recordDel(toKey(name));
}

}  // namespace NexthopGroup
