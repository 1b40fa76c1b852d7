#include "Kiv/output/TunnelRendering.h"

#include "Kiv/common/PrintDocument.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

namespace Kiv {

namespace {

using cliprint::Attr32Info;
using cliprint::JsonScope;
using cliprint::StringAttrInfo;
using Tunnel::CliSupport::CachedTunVia;
using Tunnel::CliSupport::maybeAddLabelStackToOutput;
using Tunnel::CliSupport::printTunnelViaInfo;
using Tunnel::CliSupport::TunnelResolver;

constexpr char const* viasName(bool backup) {
   return backup ? "tunViaBackupVias" : "vias";
}

}  // namespace

bool ViaBudget::take(cliprint::RendererV2& renderer) {
   if (left_ == 0) {
      isExceeded_ = true;
      return false;
   }
   --left_;
   return streams(renderer);
}

void TunnelRendering::printFormatTunVia(CachedTunVia const& tunVia, PolicyInfoSet const* policies, std::size_t indent,
                                        bool backup) {
   auto const list = JsonScope::list(renderer_, viasName(backup));
   if (policies != nullptr && !policies->policyInfo.empty()) {
      printSrTePolicySetViaModel(*policies, indent + 2, indent + 6);
      return;
   }
   // A nexthop group says itself where it leads.
   bool const tellsConnected = Tunnel::tunnelType(tunVia.tunnelId) != Tunnel::TunnelType::nexthopGroup;
   for (auto const& via : tunVia.via) {
      if (!budget_.take(renderer_)) {
         return;
      }
      auto const entry = JsonScope::listEntry(renderer_);
      renderer_.startLine(indent + 3);
      renderer_.addFrills("%s", backup ? "backup " : "");
      printTunVia(via, tellsConnected, indent, backup);
   }
}

void TunnelRendering::printTunVia(CachedTunVia::Via const& via, bool tellsConnected, std::size_t indent, bool backup) {
   if (via.intfId.isDynamicTunnel()) {
      printNestedTunnelVias({via.sortedTunViaSet.get(), via.labelStack, via.intfId, indent, 0, backup});
      return;
   }
   bool const begun = via.isConnected && tellsConnected;
   if (begun) {
      renderer_.addFrills("is directly connected");
   }
   printTunnelViaInfo(renderer_, {.interface = via.interface,
                                  .nexthop = via.isConnected ? std::string_view() : std::string_view(via.nexthopAddr),
                                  .labelStack = via.labelStack,
                                  .nexthopGroupName = via.nexthopGroupName,
                                  .weight = via.weight,
                                  .begun = begun});
}

void TunnelRendering::printNestedTunnelVias(Nested const& tunnel) {
   auto const resolving = tunnels_.makeCachedTunViaWithName(tunnel.intfId.tunnelId(), TunnelResolver::Ways::none);
   std::size_t const indent = tunnel.indent + (tunnel.depth == 0 ? 6 : 3);
   renderer_.addFrills("%s", tunnel.depth != 0 && tunnel.backup ? "backup via " : "via ");
   resolving->printResolvingTunnel(renderer_);
   maybeAddLabelStackToOutput(renderer_, tunnel.labelStack, Lumen::MplsLabel());
   if (tunnel.set != nullptr) {
      printNestedList(tunnel.set->primaryVia, tunnel, indent, false);
      if (!tunnel.set->backupVia.empty()) {
         printNestedList(tunnel.set->backupVia, tunnel, indent, true);
      }
   }
}

void TunnelRendering::printNestedList(std::vector<SortedTunVia> const& vias, Nested const& tunnel, std::size_t indent,
                                      bool backup) {
   auto const list = JsonScope::list(renderer_, viasName(backup));
   auto const weights = TunnelResolver::weightTexts(vias);
   for (std::size_t i = 0; i < vias.size(); ++i) {
      bool const isTooDeep = vias[i].intfId.isDynamicTunnel() && tunnel.depth + 1 == maxViaDepth;
      if (isTooDeep) {
         continue;
      }
      if (!budget_.take(renderer_)) {
         return;
      }
      auto const& via = vias[i];
      auto const entry = JsonScope::listEntry(renderer_);
      auto const labelStack = tunnels_.labelStack(via.encapId);
      renderer_.startLine(indent);
      if (via.intfId.isDynamicTunnel()) {
         printNestedTunnelVias({via.nested.get(), labelStack, via.intfId, indent, tunnel.depth + 1, backup});
      } else {
         renderer_.addFrills("%s", backup ? "backup " : "");
         printPlainVia(via, labelStack, weights[i]);
      }
   }
}

void TunnelRendering::printPlainVia(SortedTunVia const& via, Lumen::MplsLabelOperation const& labelStack,
                                    std::string_view weight) {
   auto const nexthop = TunnelResolver::isConnected(via) ? Zam::String() : TunnelResolver::nexthopText(via);
   auto const interface = TunnelResolver::interfaceText(via.intfId);
   printTunnelViaInfo(renderer_, {.interface = interface,
                                  .nexthop = nexthop,
                                  .labelStack = labelStack,
                                  .nexthopGroupName = {},
                                  .weight = weight});
}

void TunnelRendering::printSrTePolicySetModel(PolicyInfoSet const& set, std::size_t margin, std::size_t viaMargin) {
   auto const list = JsonScope::list(renderer_, "srTePolicies");
   for (auto const& [index, policy] : set.policyInfo) {
      if (!budget_.take(renderer_)) {
         return;
      }
      auto const entry = JsonScope::listEntry(renderer_);
      renderer_.startLine(margin + 1);
      printPolicy(policy, viaMargin);
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

void TunnelRendering::printPolicy(PolicyInfo const& policy, std::size_t viaMargin) {
   renderer_.addFrills("via ");
   printPolicyName(policy);
   maybeAddLabelStackToOutput(renderer_, policy.labelStack, policy.viaLabel);
   printWeight(policy.weight);
   auto const vias = JsonScope::list(renderer_, "vias");
   printSegmentLists(policy.sortedVia, viaMargin, viaMargin + 4);
}

void TunnelRendering::printSrTePolicySetViaModel(PolicyInfoSet const& set, std::size_t margin,
                                                 std::size_t nestedMargin) {
   for (auto const& [index, policy] : set.policyInfo) {
      printSegmentLists(policy.sortedVia, margin, nestedMargin);
   }
}

// The lists of labels that take the traffic to the endpoint, each with its first hop.
void TunnelRendering::printSegmentLists(SortedTunVias const& vias, std::size_t margin, std::size_t nestedMargin) {
   auto const weights = TunnelResolver::weightTexts(vias);
   for (std::size_t i = 0; i < vias.size(); ++i) {
      if (!budget_.take(renderer_)) {
         return;
      }
      auto const entry = JsonScope::listEntry(renderer_);
      auto const labelStack = tunnels_.labelStack(vias[i].encapId);
      renderer_.startLine(margin + 1);
      if (vias[i].intfId.isDynamicTunnel()) {
         // The further tunnel's ways stand six columns further in than they are told.
         std::size_t const indent = nestedMargin + 1 - 6;
         printNestedTunnelVias({vias[i].nested.get(), labelStack, vias[i].intfId, indent, 0, false});
      } else {
         printPlainVia(vias[i], labelStack, weights[i]);
      }
   }
}

void TunnelRendering::checkAndPrintCbfInfo(CbfInfoSet const& set, std::size_t width) {
   if (!set.cbfInfo.empty()) {
      printCbfInfoSetModel(set, width - 3, width);
   }
}

void TunnelRendering::printCbfInfoSetModel(CbfInfoSet const& set, std::size_t margin, std::size_t viaMargin) {
   auto const list = JsonScope::list(renderer_, "cbf");
   for (auto const& [index, info] : set.cbfInfo) {
      if (!budget_.take(renderer_)) {
         return;
      }
      auto const entry = JsonScope::listEntry(renderer_);
      renderer_.startLine(margin + 1);
      renderer_.addFrills("DSCP");
      {
         auto const values = JsonScope::list(renderer_, "dscp");
         for (auto const value : info.dscpValues) {
            renderer_.addElement(" %u", U32{value});
         }
      }
      renderer_.startLine(viaMargin + 1);
      if (info.policyInfo.tunnelId != 0) {
         auto const policy = JsonScope::object(renderer_, "srTePolicy");
         printPolicy(info.policyInfo, viaMargin + 4);
      } else {
         auto const ctep = JsonScope::object(renderer_, "coloredTunnelEndpoint");
         printColoredTep(info.ctepInfo, info.policyInfo.weight, viaMargin + 4);
      }
   }
}

void TunnelRendering::printWeight(std::string_view weight) {
   if (!weight.empty()) {
      StringAttrInfo const viaWeight("viaWeight", renderer_, weight);
      renderer_.addAttributes(", weight %s", viaWeight.getArg());
   }
}

void TunnelRendering::printColoredTep(ColoredTepInfo const& ctep, std::string_view weight, std::size_t viaMargin) {
   bool const isNamed = Zam::isSet(ctep.ctep);
   auto const isNexthop = [](SortedTunVia const& via) { return via.encapId == 0 && !via.intfId.isDynamicTunnel(); };
   if (!isNamed && ctep.sortedVia.size() == 1 && isNexthop(ctep.sortedVia.front())) {
      printPlainVia(ctep.sortedVia.front(), ctep.tunnelLabelStack, weight);
      return;
   }
   StringAttrInfo const endpoint("endpoint", renderer_, ctep.ctep.endpoint);
   Attr32Info const color("color", renderer_, ctep.ctep.color);
   renderer_.addFrills("via tunnel");
   if (isNamed) {
      renderer_.addAttributes(" endpoint %s, color %u", endpoint.getArg(), color.getArg());
   }
   maybeAddLabelStackToOutput(renderer_, ctep.tunnelLabelStack, ctep.viaLabel);
   printWeight(weight);
   auto const vias = JsonScope::list(renderer_, "vias");
   printSegmentLists(ctep.sortedVia, viaMargin, viaMargin + 4);
}

}  // namespace Kiv
