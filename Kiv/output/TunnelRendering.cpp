#include "Kiv/output/TunnelRendering.h"

#include "Kiv/KivCliPrint.h"
#include "Kiv/common/PrintDocument.h"
#include "Kiv/output/ViaRendering.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

namespace Kiv {

namespace {

using cliprint::Attr32Info;
using cliprint::JsonScope;
using cliprint::StringAttrInfo;
using Tunnel::CliSupport::maybeAddLabelStackToOutput;
using Tunnel::CliSupport::printTunnelViaInfo;

}  // namespace

bool ViaBudget::take(cliprint::RendererV2& renderer) {
   if (left_ == 0) {
      isExceeded_ = true;
      return false;
   }
   --left_;
   return streams(renderer);
}

void TunnelRendering::printTunnel(TunnelTarget const& tunnel, Vault::Fib::ForwardingAction action) {
   auto const* const policy = tunnel.policies != nullptr ? &tunnel.policies->policyInfo.begin()->value : nullptr;
   renderer_.addFrills(" ");
   if (tunnel.primary->ipTunnelInfo) {
      printIpTunnel(tunnel.primary->ipTunnelInfo, action);
   } else if (policy != nullptr && Zam::isSet(policy->policyKey)) {
      auto const object = JsonScope::object(renderer_, "srTePolicy");
      printPolicyName(*policy);
   } else {
      tunnel.primary->printTunnelInfo(renderer_);
   }
}

// An IP-in-IP header that goes on says so before what it holds; other kinds say it themselves.
void TunnelRendering::printIpTunnel(Tunnel::CliSupport::CachedIpTunnelInfo const& tunnel,
                                    Vault::Fib::ForwardingAction action) {
   bool const ipInIp = tunnel.isIpInIp();
   if (action == Vault::Fib::ForwardingAction::decap) {
      cliprint::DecapTypeAttrInfo decap("decapActionType", renderer_);
      decap.setValue(Routing::Rib::DecapActionType::ipIp);
      renderer_.addAttributes("%s decap ", decap.getArg());
      renderer_.addFrills("%s", ipInIp ? "and encap" : "");
   } else if (ipInIp) {
      renderer_.addFrills("IP-in-IP encap");
   }
   tunnel.print(renderer_, false);
}

// Those of a policy are segment lists: what stands beneath them is four columns further in. A nexthop group says itself
// where it leads.
void TunnelRendering::printWays(TunnelTarget const& tunnel, std::size_t indent, U32 fecDepth) {
   bool const isPolicy = tunnel.policies != nullptr;
   bool const isGroup = Tunnel::tunnelType(tunnel.primary->tunnelId) == Tunnel::TunnelType::nexthopGroup;
   printWays(tunnel, {.column = indent + 3,
                      .further = indent + (isPolicy ? 7 : 6),
                      .fecDepth = fecDepth,
                      .tellsConnected = !isPolicy && !isGroup});
}

void TunnelRendering::printWays(TunnelTarget const& tunnel, Place const& place) {
   printWayList(tunnel.primary->via, place, false);
   if (tunnel.backup != nullptr) {
      printWayList(tunnel.backup->via, place, true);
   }
}

void TunnelRendering::printWayList(std::vector<Way> const& ways, Place const& place, bool backup) {
   auto const list = JsonScope::list(renderer_, backup ? "tunViaBackupVias" : "vias");
   for (auto const& way : ways) {
      bool const isTooDeep = way.intfId.isDynamicTunnel() && place.depth == maxViaDepth;
      if (isTooDeep) {
         continue;
      }
      if (!budget_.take(renderer_)) {
         return;
      }
      auto const entry = JsonScope::listEntry(renderer_);
      renderer_.startLine(place.column);
      renderer_.addFrills("%s", backup ? "backup " : "");
      printWay(way, place);
   }
}

// Whatever it runs over follows beneath.
void TunnelRendering::printWay(Way const& way, Place const& place) {
   if (way.intfId.isDynamicTunnel()) {
      auto const further = display_.tunnel(way.intfId.tunnelId());
      renderer_.addFrills("via");
      printTunnel(further);
      maybeAddLabelStackToOutput(renderer_, way.labelStack, Lumen::MplsLabel());
      printWeight(way.weight);
      return printWays(further, {place.further, place.further + 3, place.fecDepth, place.depth + 1});
   }
   bool const begun = way.isConnected && place.tellsConnected && !way.intfId.isFecId();
   renderer_.addFrills("%s", begun ? "is directly connected" : "");
   printTunnelViaInfo(renderer_, {.interface = way.interface,
                                  .nexthop = way.isConnected ? std::string_view() : std::string_view(way.nexthopAddr),
                                  .labelStack = way.labelStack,
                                  .nexthopGroupName = way.nexthopGroupName,
                                  .weight = way.weight,
                                  .begun = begun});
   if (way.intfId.isFecId()) {
      std::size_t const column = place.column + 4;
      vias_.printResolved(Vault::Fib::FecId(way.intfId.fecId()), {column, column, place.fecDepth + 1});
   }
}

void TunnelRendering::printSrTePolicySetModel(PolicyInfoSet const& set, std::size_t margin, std::size_t viaMargin,
                                              U32 fecDepth) {
   auto const list = JsonScope::list(renderer_, "srTePolicies");
   for (auto const& [index, policy] : set.policyInfo) {
      if (!budget_.take(renderer_)) {
         return;
      }
      auto const entry = JsonScope::listEntry(renderer_);
      renderer_.startLine(margin + 1);
      printCarrier(policy, false, {viaMargin + 1, viaMargin + 5, fecDepth});
   }
}

void TunnelRendering::printPolicyName(PolicyInfo const& policy) {
   StringAttrInfo const endpoint("endpoint", renderer_, policy.policyKey.endpoint);
   Attr32Info const color("color", renderer_, policy.policyKey.color);
   cliprint::Attr64Info const index("tunnelIndex", renderer_, Tunnel::tunnelIndex(policy.tunnelId));
   if (Zam::isSet(policy.policyKey)) {
      renderer_.addAttributes("SR-TE policy endpoint %s, color %u", endpoint.getArg(), color.getArg());
      renderer_.addAttributes("", index.getArg());
   } else {
      renderer_.addAttributes("SR-TE policy tunnel index %lu", index.getArg());
   }
}

// What a policy FEC sends traffic into, or a class: a policy, another tunnel, or without one a next hop.
void TunnelRendering::printCarrier(PolicyInfo const& info, bool isOfClass, Place const& place) {
   if (info.tunnelId == 0) {
      auto way = display_.way(info.sortedVia.front());
      way.labelStack = info.labelStack;
      way.weight = info.weight;
      return printWay(way, {place.column - 4, place.column, place.fecDepth});
   }
   renderer_.addFrills("via");
   printCarrierName(info, isOfClass);
   maybeAddLabelStackToOutput(renderer_, info.labelStack, info.viaLabel);
   printWeight(info.weight);
   printWays(display_.tunnel(info.tunnelId), place);
}

void TunnelRendering::printCarrierName(PolicyInfo const& info, bool isOfClass) {
   bool const isPolicy = Tunnel::tunnelType(info.tunnelId) == Tunnel::TunnelType::srTePolicy;
   bool const isNamed = Zam::isSet(info.policyKey);
   if (isPolicy || (isNamed && !isOfClass)) {
      renderer_.addFrills(" ");
      printPolicyName(info);
   } else if (isNamed) {
      StringAttrInfo const endpoint("endpoint", renderer_, info.policyKey.endpoint);
      Attr32Info const color("color", renderer_, info.policyKey.color);
      renderer_.addAttributes(" tunnel endpoint %s, color %u", endpoint.getArg(), color.getArg());
   } else {
      printTunnel(display_.tunnel(info.tunnelId));
   }
}

void TunnelRendering::checkAndPrintCbfInfo(CbfInfoSet const& set, std::size_t width, U32 fecDepth) {
   if (set.cbfInfo.empty()) {
      return;
   }
   auto const list = JsonScope::list(renderer_, "cbf");
   for (auto const& [index, info] : set.cbfInfo) {
      if (!budget_.take(renderer_)) {
         return;
      }
      auto const entry = JsonScope::listEntry(renderer_);
      printClass(info, width - 2, {width + 5, width + 9, fecDepth});
   }
}

void TunnelRendering::printClass(CbfInfo const& info, std::size_t column, Place const& place) {
   renderer_.startLine(column);
   renderer_.addFrills("DSCP");
   {
      auto const values = JsonScope::list(renderer_, "dscp");
      for (auto const value : info.dscpValues) {
         renderer_.addElement(" %u", U32{value});
      }
   }
   renderer_.startLine(column + 3);
   bool const isPolicy = Tunnel::tunnelType(info.policyInfo.tunnelId) == Tunnel::TunnelType::srTePolicy;
   auto const object = JsonScope::object(renderer_, isPolicy ? "srTePolicy" : "coloredTunnelEndpoint");
   printCarrier(info.policyInfo, true, place);
}

void TunnelRendering::printWeight(std::string_view weight) {
   if (!weight.empty()) {
      StringAttrInfo const viaWeight("viaWeight", renderer_, weight);
      renderer_.addAttributes(", weight %s", viaWeight.getArg());
   }
}

}  // namespace Kiv
