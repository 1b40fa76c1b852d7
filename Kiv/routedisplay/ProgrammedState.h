#pragma once

#include "Kiv/common/SafeLookup.h"
#include "Kiv/routedisplay/RouteSorter.h"
#include "Lumen/IpGenPrefix.h"

namespace Kiv {

// Whether routes of a sorter's VRF are programmed where they should be. Made once per table: when nothing is listed as
// missing, asking about a route costs a test.
class ProgrammedState {
 public:
   template <class Family>
   explicit ProgrammedState(RouteSorterOf<Family> const& sorter)
       : hardware_(listed(sorter.inputs().unprogrammedRouteStatus.get())),
         kernel_(listed(sorter.inputs().kernelUnprogrammedRoute.get())),
         vrfId_(sorter.inputs().vrfId) {}

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
