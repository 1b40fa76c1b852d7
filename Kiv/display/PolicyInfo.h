#pragma once

#include "Lumen/MplsLabelOperation.h"
#include "SrTePolicy/PolicyStatus.h"
#include "Tunnel/CliSupport/SortedTunViaSet.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/String.h"
#include "Zam/Value.h"

#include <vector>

// What carries a route's traffic in place of next hops: SR-TE policies and, by traffic class, policies or colored
// tunnel endpoints. Resolved for the display when a FEC is first printed.
namespace Kiv {

using SortedTunVias = std::vector<Tunnel::CliSupport::SortedTunVia>;

// An SR-TE policy with its candidate path: one via for each segment list.
struct KIV_EXPORT PolicyInfo : Zam::ValueType {
   U32 index = 0;  // among the policies of the FEC
   SrTePolicy::PolicyKey policyKey;
   Tunnel::TunnelId tunnelId = 0;
   SortedTunVias sortedVia;
   Lumen::MplsLabel vpnLabel;             // of the service that the policy carries
   Lumen::MplsLabelOperation labelStack;  // what a packet carries below the segment list
   Lumen::MplsLabel viaLabel;             // of the route's via that leads through the policy
   Zam::String weight;                    // share and sum, among policies of unequal weight

   static constexpr auto zamDescription() {
      return Zam::describe<PolicyInfo>(
          "Kiv::PolicyInfo", Zam::attribute("index", &PolicyInfo::index),
          Zam::attribute("policyKey", &PolicyInfo::policyKey), Zam::attribute("tunnelId", &PolicyInfo::tunnelId),
          Zam::collection("sortedVia", &PolicyInfo::sortedVia), Zam::attribute("vpnLabel", &PolicyInfo::vpnLabel),
          Zam::attribute("labelStack", &PolicyInfo::labelStack), Zam::attribute("viaLabel", &PolicyInfo::viaLabel),
          Zam::attribute("weight", &PolicyInfo::weight));
   }
};

struct KIV_EXPORT PolicyInfoSet : Zam::ValueType {
   Zam::OrderedMap<U32, PolicyInfo> policyInfo;  // by index

   static constexpr auto zamDescription() {
      return Zam::describe<PolicyInfoSet>("Kiv::PolicyInfoSet",
                                          Zam::collection("policyInfo", &PolicyInfoSet::policyInfo));
   }
};

// A tunnel endpoint and the color of the tunnel that leads there.
struct KIV_EXPORT ColoredTepInfo : Zam::ValueType {
   SrTePolicy::PolicyKey ctep;
   SortedTunVias sortedVia;
   Lumen::MplsLabel vpnLabel;
   Lumen::MplsLabel viaLabel;
   Lumen::MplsLabelOperation tunnelLabelStack;  // as a policy's

   static constexpr auto zamDescription() {
      return Zam::describe<ColoredTepInfo>("Kiv::ColoredTepInfo", Zam::attribute("ctep", &ColoredTepInfo::ctep),
                                           Zam::collection("sortedVia", &ColoredTepInfo::sortedVia),
                                           Zam::attribute("vpnLabel", &ColoredTepInfo::vpnLabel),
                                           Zam::attribute("viaLabel", &ColoredTepInfo::viaLabel),
                                           Zam::attribute("tunnelLabelStack", &ColoredTepInfo::tunnelLabelStack));
   }
};

// A class of traffic and what carries it, with the endpoint and color of a tunnel that is no policy's.
struct KIV_EXPORT CbfInfo : Zam::ValueType {
   PolicyInfo policyInfo;
   ColoredTepInfo ctepInfo;
   std::vector<U8> dscpValues;

   static constexpr auto zamDescription() {
      return Zam::describe<CbfInfo>("Kiv::CbfInfo", Zam::attribute("policyInfo", &CbfInfo::policyInfo),
                                    Zam::attribute("ctepInfo", &CbfInfo::ctepInfo),
                                    Zam::collection("dscpValues", &CbfInfo::dscpValues));
   }
};

struct KIV_EXPORT CbfInfoSet : Zam::ValueType {
   Zam::OrderedMap<U32, CbfInfo> cbfInfo;  // in the order of the configuration

   static constexpr auto zamDescription() {
      return Zam::describe<CbfInfoSet>("Kiv::CbfInfoSet", Zam::collection("cbfInfo", &CbfInfoSet::cbfInfo));
   }
};

}  // namespace Kiv
