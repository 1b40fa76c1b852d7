#include "Kiv/routedisplay/KernelUnprogrammedRouteCounterSm.h"

#include "Kiv/common/SafeLookup.h"

namespace Kiv {

KernelUnprogrammedRouteCounterSm::KernelUnprogrammedRouteCounterSm(
    Zam::Ptr<Vault::KernelUnprogrammedRoute::UnprogrammedRoute const> const& table, Vrf::VrfIdMap::VrfId vrfId,
    UnprogrammedRouteCountByVrf& countByVrf)
    : countByVrf_(&countByVrf) {
   countByVrf.erase(vrfId);
   if (auto const count = safeLookup(table.get(), [&](auto const& errors) { return errors.errorCount(vrfId); })) {
      countByVrf.insertOrReplace(vrfId, *count);
   }
}

U64 KernelUnprogrammedRouteCounterSm::routeCount(Vrf::VrfIdMap::VrfId vrfId, Lumen::AddressFamily family) const {
   auto const* const count = countByVrf_->find(vrfId);
   return count != nullptr ? count->routeCount(family) : 0;
}

}  // namespace Kiv
