#include "Kiv/output/ViaRendering.h"

#include "Kiv/KivCliPrint.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

namespace Kiv {

using cliprint::JsonScope;
using cliprint::StringAttrInfo;

bool ViaRendering::printList(DisplayFec const& fec, Place const& place) {
   auto const list = JsonScope::list(renderer_, place.depth == 0 ? "vias" : "resolvedVias");
   bool directlyConnected = false;
   for (U32 index = 0; index < fec.vias(); ++index) {
      if (place.depth == maxViaDepth || !budget_.take(renderer_)) {
         return directlyConnected;
      }
      auto const entry = JsonScope::listEntry(renderer_);
      startViaLine(index, place);
      directlyConnected = printIpVia(fec.via(index), place) || directlyConnected;
   }
   printEvpnVias(fec, place);
   return directlyConnected;
}

// The vias of a FEC that only the route cache has.
void ViaRendering::printEvpnVias(DisplayFec const& fec, Place const& place) {
   U32 index = fec.vias();
   for (auto const& entry : fec.evpnVias()) {
      auto const scope = JsonScope::listEntry(renderer_);
      startViaLine(index++, place);
      printEvpnVia(entry);
   }
}

void ViaRendering::printEvpnVia(EvpnVia const& entry) {
   renderer_.addFrills("via");
   printEvpn(entry);
}

void ViaRendering::startViaLine(U32 index, Place const& place) {
   if (!layout_.sharesRouteLine || index != 0 || place.depth != 0) {
      renderer_.startLine(place.column);
   }
}

// Whether it is directly connected.
bool ViaRendering::printIpVia(DisplayVia const& via, Place const& place) {
   if (via.isConnected) {
      printConnected(via);
      return true;
   }
   renderer_.addFrills("via");
   std::visit([&](auto const& target) { printTarget(target, via, place); }, via.target);
   return false;
}

void ViaRendering::printTarget(LinkTarget const& /* target */, DisplayVia via, Place const& /* place */) {
   printViaLine(via);
}

// Its vias are printed beneath, and its interface stands for it.
void ViaRendering::printTarget(FecTarget const& target, DisplayVia via, Place const& place) {
   via.interface = {};
   printViaLine(via);
   printResolved(target.fecId, {place.indent, place.column + 4, place.depth + 1});
}

void ViaRendering::printResolved(Vault::Fib::FecId fecId, Place const& place) {
   auto const fec = display_.fec(fecId);
   if (!fec) {
      return;
   }
   printList(*fec, place);
   if (place.depth != maxViaDepth) {
      printCarriers(*fec, place.column, place.depth);
   }
}

void ViaRendering::printCarriers(DisplayFec const& fec, std::size_t column, U32 depth) {
   if (!fec.hasVias() && !fec.policies().policyInfo.empty()) {
      tunnels_.printSrTePolicySetModel(fec.policies(), column - 1, column + 3, depth);
   }
   tunnels_.checkAndPrintCbfInfo(fec.classes(), column, depth);
}

// The group says where it leads.
void ViaRendering::printTarget(GroupTarget const& target, DisplayVia via, Place const& /* place */) {
   printNexthopGroup(target);
   via.nexthop = {};
   via.interface = {};
   printViaLine(via);
}

void ViaRendering::printTarget(FallbackTarget const& target, DisplayVia via, Place const& /* place */) {
   StringAttrInfo const vrf("fallbackVrf", renderer_, target.vrfName);
   if (target.decapType == Routing::Rib::DecapActionType::none) {
      renderer_.addAttributes(" fallback VRF %s", vrf.getArg());
   } else {
      cliprint::DecapTypeAttrInfo decap("decapActionType", renderer_);
      decap.setValue(target.decapType);
      renderer_.addAttributes(" %s decapsulation, fallback VRF %s", decap.getArg(), vrf.getArg());
   }
   via.nexthop = {};
   via.weight = {};
   printViaLine(via);
}

void ViaRendering::printTarget(TunnelTarget const& target, DisplayVia via, Place const& place) {
   tunnels_.printTunnel(target, via.forwardingAction);
   via.nexthop = {};
   printViaLine(via);
   tunnels_.printWays(target, layout_.sharesRouteLine ? place.column : place.indent, place.depth);
}

void ViaRendering::printConnected(DisplayVia via) {
   renderer_.addFrills("%s", layout_.sharesRouteLine ? "is directly connected" : "via");
   printInterface(via, layout_.sharesRouteLine ? ", " : " ");
   renderer_.addFrills("%s", layout_.sharesRouteLine ? "" : ", directly connected");
   via.weight = {};  // the link is not one way among others
   printViaDetails(via);
}

void ViaRendering::printLink(DisplayVia via) {
   printInterface(via, "");
   via.weight = {};
   via.label = {};
   printViaDetails(via);
}

void ViaRendering::printInterface(DisplayVia const& via, std::string_view separator) {
   if (!via.interface.empty()) {
      renderer_.addFrills("%s", separator);
      StringAttrInfo const name("interface", renderer_, via.interface);
      renderer_.addAttributes("%s", name.getArg());
   }
}

void ViaRendering::printViaLine(DisplayVia const& via) {
   if (!via.nexthop.isZero()) {
      StringAttrInfo const nexthopAddr("nexthopAddr", renderer_, via.nexthop);
      renderer_.addAttributes(" %s", nexthopAddr.getArg());
   }
   printInterface(via, ", ");
   printViaDetails(via);
}

void ViaRendering::checkAndPrintLeftOut(std::size_t column) {
   if (!budget_.isExceeded()) {
      return;
   }
   renderer_.startLine(column);
   renderer_.addFrills("more than %u vias, further ones are not shown", ViaBudget::maxOfRoute);
   cliprint::BoolAttrInfo const flag("viasLeftOut", renderer_, true);
   renderer_.addAttributes("", flag.getArg());
   leftOut_ = true;
}

void ViaRendering::printViaDetails(DisplayVia const& via) {
   if (via.isBackup) {
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
   if (via.label.isLabel()) {
      Lumen::MplsLabelOperation const push(Lumen::MplsLabelOperation::Operation::push, {});
      Tunnel::CliSupport::maybeAddLabelStackToOutput(renderer_, push, via.label);
   }
   if (via.ipTunnel != nullptr) {
      via.ipTunnel->print(renderer_, !via.interface.empty());
   }
   if (via.vxlan != nullptr) {
      printEvpn(*via.vxlan);
   }
   if (!via.weight.empty()) {
      StringAttrInfo const viaWeight("viaWeight", renderer_, via.weight);
      renderer_.addAttributes(", weight %s", viaWeight.getArg());
   }
}

// Over VXLAN: the far tunnel end, the network and the router there.
void ViaRendering::printEvpn(EvpnVia const& entry) {
   StringAttrInfo const vtepAddr("vtepAddr", renderer_, entry.vtepAddr);
   cliprint::Attr32Info const vni("vni", renderer_, entry.vni.value());
   StringAttrInfo const routerMac("routerMac", renderer_, entry.routerMac);
   renderer_.addAttributes(" VTEP %s VNI %u router-mac %s", vtepAddr.getArg(), vni.getArg(), routerMac.getArg());
   if (entry.localIntf.isValid() && layout_.showLocalInterface) {
      StringAttrInfo const localInterface("localInterface", renderer_, entry.localIntf);
      renderer_.addAttributes(" local-interface %s", localInterface.getArg());
   }
}

void ViaRendering::printNexthopGroup(GroupTarget const& group) {
   auto const object = JsonScope::object(renderer_, "nexthopGroup");
   StringAttrInfo const groupName("groupName", renderer_, group.name);
   cliprint::Attr32Info const groupId("groupId", renderer_, group.id);
   renderer_.addAttributes(" %s, Nexthop Group ID %d", groupName.getArg(), groupId.getArg());
}

}  // namespace Kiv
