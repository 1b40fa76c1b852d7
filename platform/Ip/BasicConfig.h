#pragma once

#include "Lumen/IntfId.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"

namespace Ip {

// The configuration of every interface in one address family; the families' own types derive from it. A lookup is one
// probe. Iteration order has no meaning.
template <class IntfConfig>
class BasicConfig : public Zam::PtrInterface {
 public:
   using IntfConfigs = Zam::HashMap<Lumen::IntfId, IntfConfig>;

   IntfConfigs const& intfConfig() const noexcept { return intfConfig_; }
   // Null when the interface has no configuration in the family.
   IntfConfig const* intfConfig(Lumen::IntfId const& intfId) const { return intfConfig_.find(intfId); }
   void intfConfigIs(Lumen::IntfId const& intfId, IntfConfig config) {
      intfConfig_.insertOrReplace(intfId, std::move(config));
   }
   void intfConfigDel(Lumen::IntfId const& intfId) { intfConfig_.erase(intfId); }

 private:
   IntfConfigs intfConfig_;
};

}  // namespace Ip
