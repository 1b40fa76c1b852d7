#include "Kiv/fecs/CachedFec.h"

namespace Kiv {

CachedFec::CachedFec(Vault::Fib::FecId fecId)
    : store_(Zam::makePtr<FecStore>(FecSources())),
      number_(store_->add(fecId)) {}

CachedFec::~CachedFec() = default;

CachedFec::Vias CachedFec::via() const {
   Vias vias;
   for (auto const& via : record().vias()) {
      vias.insertOrReplace(store_->arena().cached(via), via.value != 0);
   }
   return vias;
}

void CachedFec::viaIs(CachedVia const& via, bool value) {
   store_->viaIs(store_->record(number_), store_->arena().stored(via, value));
}

bool CachedFec::viaDel(CachedVia const& via) {
   return store_->viaDel(store_->record(number_), store_->arena().stored(via, true));
}

void CachedFec::viaDelAll() {
   store_->viaDelAll(store_->record(number_));
}

void CachedFec::viaEvpnEntryIs(std::vector<EvpnVia> vias) {
   auto& record = store_->record(number_);
   record.preparedVias = static_cast<U32>(vias.size());
   store_->extras(record).evpnVias = std::move(vias);
}

Zam::Ptr<CachedFec> cachedFecFactory(Vault::Fib::FecId fecId) {
   return Zam::makePtr<CachedFec>(fecId);
}

}  // namespace Kiv
