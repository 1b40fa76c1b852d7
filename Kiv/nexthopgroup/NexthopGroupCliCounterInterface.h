#pragma once

#include "Kiv/nexthopgroup/CounterEntry.h"
#include "Zam/Ptr.h"

namespace Kiv {

// A source of counts that a CLI puts in place of the shared tables, by deriving from it.
class KIV_EXPORT NexthopGroupCliCounterInterface : public Zam::PtrInterface {
 public:
   ~NexthopGroupCliCounterInterface() override;
   std::string_view fwkType() const noexcept override;
   // Here it fails an assertion.
   virtual CounterEntry getCounters(CounterIndex const& counterIndex);
};

}  // namespace Kiv
