#include "Kiv/routedisplay/CachedFec.h"

#include <algorithm>

namespace Kiv {

CachedFec::~CachedFec() = default;

void CachedFec::viaIs(CachedVia via, bool value) {
   hasValidIntf_ = hasValidIntf_ || via.intfId.isValid();
   via_.insertOrReplace(std::move(via), value);
   textsGone();
}

bool CachedFec::viaDel(CachedVia const& via) {
   if (!via_.erase(via)) {
      return false;
   }
   hasValidIntf_ = std::any_of(via_.begin(), via_.end(), [](auto const& left) { return left.key.intfId.isValid(); });
   textsGone();
   return true;
}

void CachedFec::viaDelAll() {
   via_.clear();
   hasValidIntf_ = false;
   textsGone();
}

Zam::Ptr<CachedFec> cachedFecFactory(Vault::Fib::FecId fecId) {
   return Zam::makePtr<CachedFec>(fecId);
}

}  // namespace Kiv
