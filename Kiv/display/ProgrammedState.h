#pragma once

#include "Kiv/common/SafeLookup.h"
#include "Lumen/IpGenPrefix.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/UnprogrammedRouteStatus.h"

namespace Kiv {

// Whether routes of a VRF are programmed where they should be. Made once per table: when nothing is listed as missing,
// asking about a route costs a test. It looks no longer than the tables are held.
class ProgrammedState {
 public:
   ProgrammedState(Vault::Fib::UnprogrammedRouteStatus const* hardware,
                   Vault::KernelUnprogrammedRoute::UnprogrammedRoute const* kernel, Vrf::VrfIdMap::VrfId vrfId)
       : hardware_(listed(hardware)),
         kernel_(listed(kernel)),
         vrfId_(vrfId) {}

   bool inHardware(Lumen::IpGenPrefix const& prefix) const {
      return !safeLookup(hardware_, [&](auto const& table) { return table.unprogrammed(vrfId_, prefix); });
   }
   bool inKernel(Lumen::IpGenPrefix const& prefix) const {
      return !safeLookup(kernel_, [&](auto const& table) { return table.error(vrfId_, prefix); });
   }

 private:
   template <class Table>
   static Table const* listed(Table const* table) {
      return table != nullptr && !table->empty() ? table : nullptr;
   }

   Vault::Fib::UnprogrammedRouteStatus const* hardware_;
   Vault::KernelUnprogrammedRoute::UnprogrammedRoute const* kernel_;
   Vrf::VrfIdMap::VrfId vrfId_;
};

}  // namespace Kiv
