#pragma once

#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Int.h"
#include "Zam/Ptr.h"

namespace SrTePolicy {

// The FECs that class-based forwarding puts in place of others, by the id of the FEC replaced. Written by the policy
// agent.
class KIV_EXPORT CbfFecOverrideMap final : public Zam::PtrInterface {
 public:
   using Overrides = Zam::HashMap<U64, U64>;

   std::string_view fwkType() const noexcept override { return "SrTePolicy::CbfFecOverrideMap"; }

   Overrides const& fecOverride() const noexcept { return fecOverride_; }
   // The id of the FEC to use instead; null when the FEC stands.
   U64 const* fecOverride(U64 fecId) const { return fecOverride_.find(fecId); }
   void fecOverrideIs(U64 fecId, U64 overrideFecId) { fecOverride_.insertOrReplace(fecId, overrideFecId); }
   void fecOverrideDel(U64 fecId) { fecOverride_.erase(fecId); }

 private:
   Overrides fecOverride_;
};

}  // namespace SrTePolicy
