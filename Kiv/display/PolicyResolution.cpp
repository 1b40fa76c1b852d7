#include "Kiv/display/PolicyResolution.h"

#include "Tunnel/CliSupport/Weights.h"

namespace Kiv {

namespace {

using Tunnel::CliSupport::TunnelResolver;

// That the tunnel is set up for. One that nobody has named by endpoint and color has none.
SrTePolicy::PolicyKey policyKey(PolicyTable const& policyStatus, Tunnel::TunnelId tunnelId) {
   auto const* const key = policyStatus ? policyStatus->policyOfTunnel(tunnelId) : nullptr;
   return key != nullptr ? *key : SrTePolicy::PolicyKey();
}

SortedTunVias sortedVias(TunnelResolver& tunnels, PolicyVia const& via) {
   if (via.tunnelId == 0) {
      return {via.nexthop};
   }
   auto const set = tunnels.sortedTunViaSet(via.tunnelId);
   return set ? set->primaryVia : SortedTunVias();
}

// What a packet carries below the labels of its tunnel.
Lumen::MplsLabelOperation innerLabels(Lumen::MplsLabel label) {
   Lumen::MplsLabelOperation labels;
   if (label.isLabel()) {
      labels.operationIs(Lumen::MplsLabelOperation::Operation::push);
      labels.labelAppend(label);
   }
   return labels;
}

}  // namespace

PolicyInfoSet policyInfoSet(PolicyTable const& policyStatus, TunnelResolver& tunnels,
                            std::vector<PolicyVia> const& vias) {
   PolicyInfoSet set;
   auto const weights = Tunnel::CliSupport::weightTexts(vias);
   for (U32 i = 0; i < vias.size(); ++i) {
      PolicyInfo info;
      info.index = i;
      info.policyKey = policyKey(policyStatus, vias[i].tunnelId);
      info.tunnelId = vias[i].tunnelId;
      info.sortedVia = sortedVias(tunnels, vias[i]);
      info.vpnLabel = vias[i].label;
      info.labelStack = innerLabels(vias[i].label);
      info.weight = weights[i];
      set.policyInfo.insertOrReplace(i, std::move(info));
   }
   return set;
}

CbfInfoSet cbfInfoSet(PolicyTable const& policyStatus, TunnelResolver& tunnels,
                      std::vector<CbfClassVias> const& classes) {
   CbfInfoSet set;
   for (auto const& each : classes) {
      for (auto const& [index, policy] : policyInfoSet(policyStatus, tunnels, each.vias).policyInfo) {
         CbfInfo info;
         info.dscpValues = each.dscp;
         info.policyInfo = policy;
         if (Tunnel::tunnelType(policy.tunnelId) != Tunnel::TunnelType::srTePolicy) {
            info.ctepInfo = {
                {}, policy.policyKey, policy.sortedVia, policy.vpnLabel, policy.viaLabel, policy.labelStack};
         }
         set.cbfInfo.insertOrReplace(static_cast<U32>(set.cbfInfo.size()), std::move(info));
      }
   }
   return set;
}

}  // namespace Kiv
