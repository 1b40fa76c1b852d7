#pragma once

#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Int.h"
#include "Zam/Ptr.h"
#include "Zam/Value.h"

#include <utility>
#include <vector>

namespace SrTePolicy {

// A class of traffic and the FEC that carries it.
struct CbfClass : Zam::ValueType {
   std::vector<U8> dscp{};  // code points, 0 to 63
   U64 fecId = 0;           // of a FEC of the policy forwarding table

   static constexpr auto zamDescription() {
      return Zam::describe<CbfClass>("SrTePolicy::CbfClass", Zam::collection("dscp", &CbfClass::dscp),
                                     Zam::attribute("fecId", &CbfClass::fecId));
   }
};

// Class-based forwarding: by the id of a FEC, the FECs that carry some classes of its traffic in its place. Written by
// the policy agent.
class KIV_EXPORT CbfFecOverrideMap final : public Zam::PtrInterface {
 public:
   using Overrides = Zam::HashMap<U64, std::vector<CbfClass>>;

   std::string_view fwkType() const noexcept override { return "SrTePolicy::CbfFecOverrideMap"; }

   Overrides const& fecOverride() const noexcept { return fecOverride_; }
   // Null when the FEC carries all its traffic itself.
   std::vector<CbfClass> const* fecOverride(U64 fecId) const { return fecOverride_.find(fecId); }
   void fecOverrideIs(U64 fecId, std::vector<CbfClass> classes) {
      fecOverride_.insertOrReplace(fecId, std::move(classes));
   }
   void fecOverrideDel(U64 fecId) { fecOverride_.erase(fecId); }

 private:
   Overrides fecOverride_;
};

}  // namespace SrTePolicy
