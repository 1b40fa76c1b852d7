#pragma once

#include "Lumen/IpGenAddr.h"
#include "Tunnel/TunnelId.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"
#include "Zam/Value.h"

namespace SrTePolicy {

// What identifies a policy on its head end: where it leads, and the color that stands for its intent.
struct PolicyKey : Zam::ValueType {
   Lumen::IpGenAddr endpoint;
   U32 color = 0;

   static constexpr auto zamDescription() {
      return Zam::describe<PolicyKey>("SrTePolicy::PolicyKey", Zam::attribute("endpoint", &PolicyKey::endpoint),
                                      Zam::attribute("color", &PolicyKey::color));
   }
};

// The policies that are set up, with the tunnel of each. Written by the policy agent.
class KIV_EXPORT PolicyStatus final : public Zam::PtrInterface {
 public:
   using Policies = Zam::HashMap<PolicyKey, Tunnel::TunnelId>;

   std::string_view fwkType() const noexcept override { return "SrTePolicy::PolicyStatus"; }

   Policies const& policy() const noexcept { return policy_; }
   // Null when there is no such policy.
   Tunnel::TunnelId const* policy(PolicyKey const& key) const { return policy_.find(key); }
   // The policy that the tunnel belongs to; null when it belongs to none.
   PolicyKey const* policyOfTunnel(Tunnel::TunnelId tunnelId) const { return byTunnel_.find(tunnelId); }
   void policyIs(PolicyKey const& key, Tunnel::TunnelId tunnelId) {
      policyDel(key);
      policy_.insertOrReplace(key, tunnelId);
      byTunnel_.insertOrReplace(tunnelId, key);
   }
   void policyDel(PolicyKey const& key) {
      if (auto const* const tunnelId = policy(key); tunnelId != nullptr) {
         if (auto const* const owner = policyOfTunnel(*tunnelId); owner != nullptr && *owner == key) {
            byTunnel_.erase(*tunnelId);
         }
         policy_.erase(key);
      }
   }

 private:
   Policies policy_;
   Zam::HashMap<Tunnel::TunnelId, PolicyKey> byTunnel_;
};

}  // namespace SrTePolicy
