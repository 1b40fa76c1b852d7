#pragma once

#include "Lumen/IntfId.h"
#include "Tunnel/IpTunnelEncap.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

namespace Interface {

struct IntfConfig {
   Zam::String description{};
   Tunnel::IpTunnelEncap tunnel{};  // of a tunnel interface
};

// The configuration of every interface of the box. Written by the configuration.
class KIV_EXPORT AllIntfConfigDir final : public Zam::PtrInterface {
 public:
   using IntfConfigs = Zam::HashMap<Lumen::IntfId, IntfConfig>;

   std::string_view fwkType() const noexcept override { return "Interface::AllIntfConfigDir"; }

   IntfConfigs const& intfConfig() const noexcept { return intfConfig_; }
   // Null when the interface is not configured.
   IntfConfig const* intfConfig(Lumen::IntfId const& intfId) const { return intfConfig_.find(intfId); }
   // Empty when the interface is not configured or has no description; good until the next change.
   std::string_view description(Lumen::IntfId const& intfId) const {
      auto const* const config = intfConfig(intfId);
      return config != nullptr ? std::string_view(config->description) : std::string_view();
   }

   void intfConfigIs(Lumen::IntfId const& intfId, IntfConfig config) {
      intfConfig_.insertOrReplace(intfId, std::move(config));
   }
   void intfConfigDel(Lumen::IntfId const& intfId) { intfConfig_.erase(intfId); }

 private:
   IntfConfigs intfConfig_;
};

}  // namespace Interface
