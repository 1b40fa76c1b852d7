#include "Kiv/nexthopgroup/NexthopGroupCliCounterInterface.h"

#include "Kiv/common/Trace.h"
#include "Zam/Error.h"

namespace Kiv {

NexthopGroupCliCounterInterface::~NexthopGroupCliCounterInterface() = default;

std::string_view NexthopGroupCliCounterInterface::fwkType() const noexcept {
   return "Kiv::NexthopGroupCliCounterInterface";
}

CounterEntry NexthopGroupCliCounterInterface::getCounters(CounterIndex const&) {
   Zam::assertionFailed(
       "0 && \"Need to implement getCounters in a derived class\"", traceSource,
       "virtual Kiv::CounterEntry Kiv::NexthopGroupCliCounterInterface::getCounters(const Kiv::CounterIndex&)");
}

}  // namespace Kiv
