#include "Kiv/fecs/FecStore.h"

#include <algorithm>
#include <bit>

namespace Kiv {

FecStore::Number FecStore::add(Vault::Fib::FecId fecId) {
   if (size_ == chunks_.size() * chunkSize) {
      chunks_.push_back(std::make_unique<FecRecord[]>(chunkSize));
   }
   auto& added = record(size_);
   added.fecId = fecId;
   added.number = size_;
   return size_++;
}

FecExtras& FecStore::extras(FecRecord& record) {
   if (record.extras == nullptr) {
      record.extras = &extras_.emplace_back();
   }
   return *record.extras;
}

void FecStore::viasAre(FecRecord& record, std::span<StoredVia> vias) {
   auto const before = [this](auto const& a, auto const& b) { return arena_.compare(a, b) < 0; };
   auto const notBefore = [&](auto const& a, auto const& b) { return !before(a, b); };
   auto end = vias.end();
   if (std::adjacent_find(vias.begin(), vias.end(), notBefore) != vias.end()) {
      std::sort(vias.begin(), vias.end(), before);
      end = std::unique(vias.begin(), vias.end(), notBefore);
   }
   auto const count = static_cast<std::size_t>(end - vias.begin());
   // With room up to the next power of two, as for those that are added one by one.
   record.firstVia = count != 0 ? arena_.room(std::bit_ceil(count)) : nullptr;
   record.viaCount = static_cast<U32>(count);
   std::copy(vias.begin(), end, record.firstVia);
   changed(record);
}

StoredVia* FecStore::lowerBound(FecRecord const& record, StoredVia const& via) const {
   return std::partition_point(record.firstVia, record.firstVia + record.viaCount,
                               [&](StoredVia const& at) { return arena_.compare(at, via) < 0; });
}

bool FecStore::isAt(FecRecord const& record, StoredVia const* at, StoredVia const& via) const {
   return at != record.firstVia + record.viaCount && arena_.compare(*at, via) == 0;
}

void FecStore::viaIs(FecRecord& record, StoredVia const& via) {
   auto* at = lowerBound(record, via);
   if (isAt(record, at, via)) {
      *at = via;
      return changed(record);
   }
   auto const place = at - record.firstVia;
   U32 const count = record.viaCount;
   if (count == 0 || std::has_single_bit(count)) {
      auto* const room = arena_.room(std::size_t{count} * 2 + (count == 0 ? 1 : 0));
      std::copy(record.firstVia, record.firstVia + count, room);
      record.firstVia = room;
   }
   at = record.firstVia + place;
   std::copy_backward(at, record.firstVia + count, record.firstVia + count + 1);
   *at = via;
   ++record.viaCount;
   changed(record);
}

bool FecStore::viaDel(FecRecord& record, StoredVia const& via) {
   auto* const at = lowerBound(record, via);
   if (!isAt(record, at, via)) {
      return false;
   }
   std::copy(at + 1, record.firstVia + record.viaCount, at);
   --record.viaCount;
   changed(record);
   return true;
}

void FecStore::viaDelAll(FecRecord& record) {
   record.viaCount = 0;
   changed(record);
}

void FecStore::copy(FecStore const& from, FecRecord const& other, Number to) {
   auto& record = this->record(to);
   std::vector<StoredVia> vias;
   for (auto const& via : other.vias()) {
      vias.push_back(arena_.stored(from.arena_.cached(via), via.value != 0));
      vias.back().position = via.position;
   }
   auto const fecId = record.fecId;
   record = other;
   record.fecId = fecId;
   record.number = to;
   record.extras = nullptr;
   if (other.extras != nullptr) {
      extras(record) = *other.extras;
   }
   viasAre(record, vias);
   record.preparedVias = other.preparedVias;
}

bool FecStore::isResolved(FecRecord const& record, StoredVia const& via) const {
   auto const& intfId = arena_.leg(via).intfId;
   bool const leads = intfId.isDynamicTunnel() ? sources_.hasTunnel(intfId.tunnelId()) : intfId.isValid();
   return leads || extras(record).vxlanOfVia.contains(arena_.cached(via));
}

void FecStore::changed(FecRecord& record) {
   auto const vias = record.vias();
   record.isResolved = std::any_of(vias.begin(), vias.end(), [&](auto const& via) { return isResolved(record, via); });
   record.preparedVias = static_cast<U32>(std::as_const(*this).extras(record).evpnVias.size());
}

}  // namespace Kiv
