#include "Tunnel/CliSupport/CachedTunVia.h"

#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

#include <string>

namespace Tunnel::CliSupport {

namespace {

using cliprint::Attr32Info;
using cliprint::Attr64Info;
using cliprint::JsonScope;
using cliprint::RendererV2;
using cliprint::StringAttrInfo;
using Operation = Lumen::MplsLabelOperation::Operation;

struct OperationWords {
   std::string_view text;  // before the labels
   std::string_view model;
};

// Labels without an operation are pushed.
constexpr OperationWords operationWords(Operation operation) {
   switch (operation) {
      case Operation::swap:
         return {", swap label", "swap"};
      case Operation::pop:
         return {", pop label", "pop"};
      case Operation::none:
      case Operation::push:
         break;
   }
   return {", label", "push"};
}

template <class Value>
void addText(RendererV2& renderer, cliprint::AttrName name, cliprint::AttrFormat<cliprint::TextArg> const& format,
             Value const& value) {
   StringAttrInfo const attribute(name, renderer, value);
   renderer.addAttributes(format, attribute.getArg());
}

}  // namespace

Zam::String tunnelTypeText(TunnelType type) {
   switch (type) {
      case TunnelType::unknown:
         break;
      case TunnelType::staticTunnel:
         return "static";
      case TunnelType::ldp:
         return "LDP";
      case TunnelType::bgpLu:
         return "BGP LU";
      case TunnelType::isisSr:
         return "IS-IS SR";
      case TunnelType::isisFlexAlgo:
         return "IS-IS FlexAlgo";
      case TunnelType::rsvpLer:
         return "RSVP LER";
      case TunnelType::srTePolicy:
         return "SR-TE policy";
      case TunnelType::evpnVxlan:
         return "EVPN VXLAN";
      case TunnelType::nexthopGroup:
         return "nexthop group";
   }
   return "type " + std::to_string(static_cast<U32>(type));
}

std::string_view CachedIpTunnelInfo::name() const noexcept {
   switch (encap_.type) {
      case IpEncapType::none:
         return "";
      case IpEncapType::ipInIp:
         return "IP-in-IP";
      case IpEncapType::gre:
         return "GRE";
      case IpEncapType::vxlan:
         return "VXLAN";
      case IpEncapType::udp:
         return "UDP";
   }
   return "";
}

void CachedIpTunnelInfo::print(RendererV2& renderer, bool interfacePrinted) const {
   if (!*this) {
      return;
   }
   auto const object = JsonScope::object(renderer, "ipTunnel");
   addText(renderer, "encapType", "", name());
   if (interfacePrinted) {
      renderer.addFrills(", %s encap", name());
   } else if (!isIpInIp()) {
      renderer.addFrills("%s encap", name());
   }
   if (!encap_.source.isEmpty()) {
      addText(renderer, "source", " source %s", encap_.source);
   }
   if (!encap_.destination.isEmpty()) {
      addText(renderer, "destination", " destination %s", encap_.destination);
   }
   if (encap_.type == IpEncapType::vxlan) {
      Attr32Info const vni("vni", renderer, encap_.key);
      renderer.addAttributes(" VNI %u", vni.getArg());
   } else if (encap_.key != 0) {
      Attr32Info const key("key", renderer, encap_.key);
      renderer.addAttributes(" key %u", key.getArg());
   }
   if (encap_.ttl != 0) {
      Attr32Info const ttl("ttl", renderer, encap_.ttl);
      renderer.addAttributes(" ttl %u", ttl.getArg());
   }
   if (encap_.tos != 0) {
      Attr32Info const tos("tos", renderer, encap_.tos);
      renderer.addAttributes(" tos %u", tos.getArg());
   }
}

void CachedTunVia::printTunnelInfo(RendererV2& renderer) const {
   auto const object = JsonScope::object(renderer, "tunnel");
   StringAttrInfo const type("tunnelType", renderer, tunnelTypeText());
   Attr64Info const index("tunnelIndex", renderer, tunnelIndex(tunnelId));
   renderer.addAttributes("%s tunnel index %lu", type.getArg(), index.getArg());
   if (!tunnelName.empty()) {
      addText(renderer, "tunnelName", ", name %s", tunnelName);
   }
   if (!algorithm.empty()) {
      addText(renderer, "algorithm", ", algorithm %s", algorithm);
   }
   if (!endpoint.empty()) {
      addText(renderer, "endpoint", ", endpoint %s", endpoint);
   }
}

void printTunnelViaInfo(RendererV2& renderer, TunnelViaInfo const& info) {
   if (!info.begun) {
      renderer.addFrills("via");
   }
   std::string_view separator = info.begun ? ", " : " ";
   auto const add = [&](cliprint::AttrName name, std::string_view word, std::string_view value) {
      if (!value.empty()) {
         renderer.addFrills("%s%s", separator, word);
         addText(renderer, name, "%s", value);
         separator = ", ";
      }
   };
   add("nexthopGroupName", "Nexthop Group ", info.nexthopGroupName);
   add("nexthopAddr", "", info.nexthop);
   add("interface", "", info.interface);
   maybeAddLabelStackToOutput(renderer, info.labelStack, Lumen::MplsLabel());
   if (!info.weight.empty()) {
      addText(renderer, "viaWeight", ", weight %s", info.weight);
   }
}

void maybeAddLabelStackToOutput(RendererV2& renderer, Lumen::MplsLabelOperation const& labelStack,
                                Lumen::MplsLabel label) {
   bool const isPop = labelStack.operation() == Operation::pop;
   if (labelStack.stackSize() == 0 && !label.isLabel() && !isPop) {
      return;
   }
   auto const words = operationWords(labelStack.operation());
   addText(renderer, "labelOperation", "", words.model);
   renderer.addFrills("%s", words.text);
   auto const list = JsonScope::list(renderer, "labelStack");
   for (auto const each : labelStack.labels()) {
      renderer.addElement(" %u", each.value());
   }
   if (label.isLabel()) {
      renderer.addElement(" %u", label.value());
   }
}

}  // namespace Tunnel::CliSupport
