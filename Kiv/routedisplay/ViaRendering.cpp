#include "Kiv/routedisplay/ViaRendering.h"

#include "Kiv/KivCliPrint.h"
#include "Kiv/routedisplay/ViaTexts.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

namespace Kiv {

namespace {

using cliprint::JsonScope;
using cliprint::StringAttrInfo;

std::string_view textAt(PerVia<Zam::String> const& texts, U16 index) {
   auto const* const text = texts.find(index);
   return text != nullptr ? std::string_view(*text) : std::string_view();
}

}  // namespace

template <class Family>
ViaRendering<Family>::ViaRendering(RouteSorterOf<Family> const& sorter, cliprint::RendererV2& renderer)
    : sorter_(sorter),
      renderer_(renderer),
      resolver_(tunnelSources(sorter)),
      tunnels_(renderer, resolver_, budget_) {}

template <class Family>
CachedFec* ViaRendering<Family>::preparedFec(Vault::Fib::FecId fecId) {
   auto const* const fec = sorter_.fecs().find(fecId);
   if (fec == nullptr) {
      return nullptr;
   }
   if (!(*fec)->textsPrepared) [[unlikely]] {
      prepareViaTexts(sorter_, resolver_, **fec);
   }
   return fec->get();
}

template <class Family>
ViaLine ViaRendering<Family>::viaLine(CachedFec const& fec, U16 index) {
   auto const* const vrf = fec.vrfName.find(index);
   auto const* const label = fec.label.find(index);
   return {.nexthop = textAt(fec.nexthopAddr, index),
           .interface = textAt(fec.interface, index),
           .backup = fec.viaTypeString.has(index),
           .egressVrf = vrf != nullptr ? std::string_view(*vrf) : std::string_view(),
           .interfaceDescription = textAt(fec.interfaceDescription, index),
           .labelOperation = fec.viaLabelStack.find(index),
           .label = label != nullptr ? *label : Lumen::MplsLabel(),
           .ipTunnelInfo = fec.ipEncapTunInfo.find(index),
           .evpnEntry = fec.vxlanEntry.find(index),
           .weight = textAt(fec.weightText, index)};
}

template <class Family>
bool ViaRendering<Family>::printList(CachedFec const& fec, Layout const& layout) {
   auto const* const listName = layout.depth == 0 ? "vias" : "resolvedVias";
   auto const list = JsonScope::list(renderer_, listName);
   bool directlyConnected = false;
   U16 index = 0;
   for (auto const& [via, present] : fec.via()) {
      if (layout.depth == maxViaDepth || !budget_.take(renderer_, layout.depth != 0)) {
         return directlyConnected;
      }
      directlyConnected = printIpVia(fec, via, index, layout) || directlyConnected;
      ++index;
   }
   printEvpnVias(fec, index, layout);
   return directlyConnected;
}

// The vias of a FEC that only the route cache has.
template <class Family>
void ViaRendering<Family>::printEvpnVias(CachedFec const& fec, U16 index, Layout const& layout) {
   for (U32 i = 0; i < fec.viaEvpnEntry.size(); ++i) {
      auto const entry = JsonScope::listEntry(renderer_);
      startViaLine(index++, layout);
      renderer_.addFrills("via");
      printViaLine({.evpnEntry = fec.viaEvpnEntry.find(static_cast<U16>(i))});
   }
}

template <class Family>
void ViaRendering<Family>::startViaLine(U16 index, Layout const& layout) {
   if (!Family::viasShareRouteLine || index != 0 || layout.depth != 0) {
      renderer_.startLine(layout.column());
   }
}

template <class Family>
bool ViaRendering<Family>::printIpVia(CachedFec const& fec, CachedVia const& via, U16 index, Layout const& layout) {
   auto const entry = JsonScope::listEntry(renderer_);
   startViaLine(index, layout);
   auto line = viaLine(fec, index);
   if (auto const* const group = fec.nhgVia.find(index); group != nullptr) {
      renderer_.addFrills("via");
      printNexthopGroup(*group);
      line.nexthop = line.interface = {};  // the group says where it leads
      printViaLine(line);
      return false;
   }
   if (via.fecId() && !via.isForwardingVrfAction()) {
      printResolvedVias(via, line, layout);
      return false;
   }
   if (isDirectlyConnected(line.nexthop) && !fec.tunVia.has(index)) {
      printConnected(line);
      return true;
   }
   renderer_.addFrills("via");
   printTarget(fec, via, index, line, layout);
   return false;
}

// A via that is told by what it leads to: its line, and beneath it the ways of a tunnel.
template <class Family>
void ViaRendering<Family>::printTarget(CachedFec const& fec, CachedVia const& via, U16 index, ViaLine line,
                                       Layout const& layout) {
   if (auto const* const fallback = fec.fallbackVia.find(index); fallback != nullptr) {
      printFallback(*fallback);
      line.nexthop = line.weight = {};
   } else if (auto const* const tunnel = fec.tunVia.find(index); tunnel != nullptr) {
      printTunnel(fec, via, index);
      line.nexthop = {};
   }
   printViaLine(line);
   printTunnelVias(fec, index, layout);
}

template <class Family>
void ViaRendering<Family>::printFallback(CachedFallbackVia const& via) {
   StringAttrInfo const vrf("fallbackVrf", renderer_, via.vrfName);
   if (via.decapType == Routing::Rib::DecapActionType::none) {
      renderer_.addAttributes(" fallback VRF %s", vrf.getArg());
   } else {
      cliprint::DecapTypeAttrInfo decap("decapActionType", renderer_);
      decap.setValue(via.decapType);
      renderer_.addAttributes(" %s decapsulation, fallback VRF %s", decap.getArg(), vrf.getArg());
   }
}

template <class Family>
void ViaRendering<Family>::printTunnel(CachedFec const& fec, CachedVia const& via, U16 index) {
   renderer_.addFrills(" ");
   auto const& tunnel = **fec.tunVia.find(index);
   auto const* const policies = fec.tunViaPolicyInfoSet.find(index);
   if (tunnel.ipTunnelInfo) {
      printIpTunnel(tunnel.ipTunnelInfo, via.forwardingAction);
   } else if (policies != nullptr && Zam::isSet(policies->policyInfo.begin()->value.policyKey)) {
      auto const object = JsonScope::object(renderer_, "srTePolicy");
      tunnels_.printPolicyName(policies->policyInfo.begin()->value);
   } else {
      tunnel.printTunnelInfo(renderer_);
   }
}

// An IP-in-IP header that goes on says so before what it holds; other kinds say it themselves.
template <class Family>
void ViaRendering<Family>::printIpTunnel(Tunnel::CliSupport::CachedIpTunnelInfo const& tunnel,
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

template <class Family>
void ViaRendering<Family>::printTunnelVias(CachedFec const& fec, U16 index, Layout const& layout) {
   auto const* const tunnel = fec.tunVia.find(index);
   if (tunnel == nullptr) {
      return;
   }
   std::size_t const indent = Family::viasShareRouteLine ? layout.column() : layout.indent;
   tunnels_.printFormatTunVia(**tunnel, fec.tunViaPolicyInfoSet.find(index), indent, false);
   if (auto const* const backup = fec.tunViaBackupVia.find(index); backup != nullptr) {
      tunnels_.printFormatTunVia(**backup, nullptr, indent, true);
   }
}

// A via that resolves through another FEC, whose vias are printed beneath.
template <class Family>
void ViaRendering<Family>::printResolvedVias(CachedVia const& via, ViaLine const& line, Layout const& layout) {
   renderer_.addFrills("via");
   auto shown = line;
   shown.interface = {};  // that stands for the FEC
   printViaLine(shown);
   if (auto const* const resolved = preparedFec(via.fecId()); resolved != nullptr) {
      printList(*resolved, {layout.indent, layout.depth + 1});
   }
}

template <class Family>
void ViaRendering<Family>::printConnected(ViaLine const& via) {
   renderer_.addFrills("%s", Family::viasShareRouteLine ? "is directly connected" : "via");
   printInterface(via, Family::viasShareRouteLine ? ", " : " ");
   renderer_.addFrills("%s", Family::viasShareRouteLine ? "" : ", directly connected");
   auto details = via;
   details.weight = {};  // the link is not one way among others
   printViaDetails(details);
}

template <class Family>
void ViaRendering<Family>::printInterface(ViaLine const& via, std::string_view separator) {
   if (!via.interface.empty()) {
      renderer_.addFrills("%s", separator);
      StringAttrInfo const name("interface", renderer_, via.interface);
      renderer_.addAttributes("%s", name.getArg());
   }
}

template <class Family>
void ViaRendering<Family>::printViaLine(ViaLine const& via) {
   if (!via.nexthop.empty()) {
      StringAttrInfo const nexthopAddr("nexthopAddr", renderer_, via.nexthop);
      renderer_.addAttributes(" %s", nexthopAddr.getArg());
   }
   printInterface(via, ", ");
   printViaDetails(via);
}

template <class Family>
void ViaRendering<Family>::printViaDetails(ViaLine const& via) {
   if (via.backup) {
      StringAttrInfo const viaType("viaType", renderer_, "backup");
      renderer_.addAttributes(", %s", viaType.getArg());
   }
   if (!via.egressVrf.empty()) {
      StringAttrInfo const egressVrf("egressVrf", renderer_, via.egressVrf);
      renderer_.addAttributes(" (egress VRF %s)", egressVrf.getArg());
   }
   if (!via.interfaceDescription.empty()) {
      StringAttrInfo const description("interfaceDescription", renderer_, via.interfaceDescription);
      renderer_.addAttributes(" %s", description.getArg());
   }
   Tunnel::CliSupport::maybeAddLabelStackToOutput(
       renderer_, via.labelOperation != nullptr ? *via.labelOperation : Lumen::MplsLabelOperation(), via.label);
   if (via.ipTunnelInfo != nullptr) {
      via.ipTunnelInfo->print(renderer_, !via.interface.empty());
   }
   if (via.evpnEntry != nullptr) {
      printEvpn(*via.evpnEntry);
   }
   if (!via.weight.empty()) {
      StringAttrInfo const viaWeight("viaWeight", renderer_, via.weight);
      renderer_.addAttributes(", weight %s", viaWeight.getArg());
   }
}

// Over VXLAN: the far tunnel end, the network and the router there.
template <class Family>
void ViaRendering<Family>::printEvpn(Tunnel::TunnelTable::EvpnVxlanTunnelEntry const& entry) {
   StringAttrInfo const vtepAddr("vtepAddr", renderer_, entry.vtepAddr);
   cliprint::Attr32Info const vni("vni", renderer_, entry.vni.value());
   StringAttrInfo const routerMac("routerMac", renderer_, entry.routerMac);
   renderer_.addAttributes(" VTEP %s VNI %u router-mac %s", vtepAddr.getArg(), vni.getArg(), routerMac.getArg());
   if (entry.localIntf.isValid() && sorter_.inputs().showLocalInterface) {
      StringAttrInfo const localInterface("localInterface", renderer_, entry.localIntf);
      renderer_.addAttributes(" local-interface %s", localInterface.getArg());
   }
}

template <class Family>
void ViaRendering<Family>::printNexthopGroup(CachedNhgVia const& via) {
   auto const object = JsonScope::object(renderer_, "nexthopGroup");
   StringAttrInfo const groupName("groupName", renderer_, via.nhgName);
   cliprint::Attr32Info const groupId("groupId", renderer_, via.nhgId);
   renderer_.addAttributes(" %s, Nexthop Group ID %d", groupName.getArg(), groupId.getArg());
}

template class ViaRendering<Ipv4>;
template class ViaRendering<Ipv6>;

}  // namespace Kiv
