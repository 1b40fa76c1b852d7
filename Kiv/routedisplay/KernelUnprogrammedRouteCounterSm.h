#pragma once

#include "Lumen/AddressFamily.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vrf/VrfId.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"

namespace Kiv {

// Per VRF, how many routes of each family the kernel did not accept.
using UnprogrammedRouteCountByVrf = Zam::HashMap<Vrf::VrfIdMap::VrfId, Vault::KernelUnprogrammedRoute::ErrorCount>;

// Takes the count of one VRF from the kernel's error table, once, when a sorter is initialised; the warning above the
// table and the routes below it are of the same moment.
class KIV_EXPORT KernelUnprogrammedRouteCounterSm {
 public:
   KernelUnprogrammedRouteCounterSm(Zam::Ptr<Vault::KernelUnprogrammedRoute::UnprogrammedRoute const> const& table,
                                    Vrf::VrfIdMap::VrfId vrfId, UnprogrammedRouteCountByVrf& countByVrf);

   // 0 for a VRF that has no error-count record.
   U64 routeCount(Vrf::VrfIdMap::VrfId vrfId, Lumen::AddressFamily family) const;

 private:
   UnprogrammedRouteCountByVrf const* countByVrf_;
};

}  // namespace Kiv
