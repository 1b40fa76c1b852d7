#include "Kiv/routedisplay/RouteRendering.h"

#include "Kiv/KivCliPrint.h"
#include "Kiv/routedisplay/OutputParts.h"
#include "Kiv/routedisplay/ViaTexts.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

#include <charconv>

namespace Kiv {

namespace {

using cliprint::JsonScope;
using cliprint::StringAttrInfo;

constexpr std::size_t prefixColumn = 10;
constexpr std::size_t indent6 = 11;
constexpr std::size_t indentPerDepth = 4;
// Vias that resolve through further FECs are printed down to this depth, so that a loop among them ends.
constexpr U32 maxDepth = 16;
// Depth alone does not end what FECs with several vias to each other expand to; no real route has this many.
constexpr U32 maxPrintedVias = 65'536;

constexpr std::string_view unknownNexthopGroup = "NexthopGroupUnknown";

constexpr auto blankText = [] {
   std::array<char, 256> blanks{};
   blanks.fill(' ');
   return blanks;
}();

constexpr std::string_view blanks(std::size_t count) {
   return {blankText.data(), std::min(count, blankText.size())};
}

constexpr std::size_t digits(U32 number) {
   std::size_t count = 1;
   for (; number >= 10; number /= 10) {
      ++count;
   }
   return count;
}

// The next hop text of a via without a gateway: the destination itself is on the link.
bool isDirectlyConnected(std::string_view nexthop) {
   return nexthop == "0.0.0.0" || nexthop == "::";
}

}  // namespace

int printSrcVrfHeader(cliprint::RendererV2& renderer, std::string_view srcVrf) {
   bool const several = srcVrf == "multiple source VRFs";
   std::string_view const words = several ? "" : "source VRF ";
   renderer.addFrills("(");
   renderer.addFrills("%s", words);
   StringAttrInfo const name("srcVrf", renderer, srcVrf);
   renderer.addAttributes("%s", name.getArg());
   renderer.addFrills(") ");
   return static_cast<int>(std::string_view("() ").size() + words.size() + srcVrf.size());
}

template <class Family>
CachedFec const* RouteRendering<Family>::preparedFec(Vault::Fib::FecId fecId) const {
   auto const* const fec = sorter_.fecs().find(fecId);
   if (fec == nullptr) {
      return nullptr;
   }
   if (!(*fec)->textsPrepared) {
      prepareViaTexts(sorter_, **fec);
   }
   return fec->get();
}

template <class Family>
std::string_view RouteRendering<Family>::srcVrfName(Route const& route) const {
   auto const& in = sorter_.inputs();
   if (route.srcVrfId == Vrf::VrfIdMap::noVrf || route.srcVrfId == in.vrfId) {
      return {};
   }
   auto const* const name = in.vrfIdMap ? in.vrfIdMap->vrfName(route.srcVrfId) : nullptr;
   return name != nullptr ? std::string_view(*name) : "unknown";
}

template <class Family>
void RouteRendering<Family>::printRoute(Route const& route) {
   printedVias_ = 0;
   StringAttrInfo const prefix("prefix", renderer_, route.prefix);
   Line line{route, prefix.getArg().value, preparedFec(route.fecId), srcVrfName(route), {}, {}};
   if (line.fec != nullptr && line.fec->vias() == 1) {
      line.nexthop = line.fec->nexthopAddr.find(0)->bytes();
      line.interface = line.fec->interface.find(0)->bytes();
   }
   auto const entry = JsonScope::dictEntry(renderer_, prefix);
   printColumns(line);
   if constexpr (Family::viasShareRouteLine) {
      printFormatRoute4(line);
   } else {
      printFormatRoute6(line);
   }
}

// The flags and the code, then blanks up to the prefix, which starts in the same column whatever precedes it.
template <class Family>
void RouteRendering<Family>::printColumns(Line const& line) {
   cliprint::HardwareProgrammedAttrInfo hardware("hardwareProgrammed", renderer_);
   hardware.setValue(programmed_.inHardware(line.route.prefix));
   cliprint::RouteTypeAttrInfo type("routeType", renderer_);
   type.setValue(line.route.routeType);
   cliprint::RouteLeakedAttrInfo leaked("routeLeaked", renderer_);
   leaked.setValue(line.leaked());
   cliprint::KernelProgrammedAttrInfo kernel("kernelProgrammed", renderer_);
   kernel.setValue(programmed_.inKernel(line.route.prefix));
   renderer_.addAttributes("%s%s%s%s", hardware.getArg(), type.getArg(), leaked.getArg(), kernel.getArg());
   std::size_t const flagColumns = line.leaked() ? 4 : 2;
   std::size_t const codeColumns = std::string_view(pcode(line.route.routeType)).size();
   renderer_.addFrills("%s%s", blanks(prefixColumn - flagColumns - codeColumns), line.prefix);
}

template <class Family>
void RouteRendering<Family>::printAction(bool forward) {
   StringAttrInfo const action("routeAction", renderer_, forward ? "forward" : "drop");
   renderer_.addAttributes("", action.getArg());
}

template <class Family>
void RouteRendering<Family>::printDirectlyConnectedFlag(bool directlyConnected) {
   cliprint::BoolAttrInfo const flag("directlyConnected", renderer_, directlyConnected);
   renderer_.addAttributes("", flag.getArg());
}

template <class Family>
void RouteRendering<Family>::printPreference(Line const& line) {
   cliprint::S32AttrInfo const preference("preference", renderer_, S32{line.route.preference});
   cliprint::Attr32Info const metric("metric", renderer_, line.route.metric);
   renderer_.addAttributes(" [%d/%u]", preference.getArg(), metric.getArg());
}

template <class Family>
void RouteRendering<Family>::printFormatRoute4(Line const& line) {
   if (isDirectlyConnected(line.nexthop)) {
      printDirectlyConnected(line);
      return;
   }
   if (!line.hasVias()) {
      printWithoutNexthop(line);
      return;
   }
   printAction(true);
   printPreference(line);
   renderer_.addFrills(" ");
   std::size_t indent = prefixColumn + line.prefix.size() + digits(line.route.preference) + digits(line.route.metric) +
                        std::string_view(" [/] ").size();
   if (line.leaked()) {
      indent += static_cast<std::size_t>(printSrcVrfHeader(renderer_, line.srcVrf));
   }
   bool const directlyConnected = printIpVias(*line.fec, {indent, 0});
   renderer_.addFrills("\n");
   printDirectlyConnectedFlag(directlyConnected);
}

// The same in the layout of IPv6 prefixes: every via on a line of its own, at one fixed width.
template <class Family>
void RouteRendering<Family>::printFormatRoute6(Line const& line) {
   bool const forward = line.hasVias() || line.route.routeType == Family::RouteType::routeCacheConnected;
   printAction(forward);
   printPreference(line);
   if (line.leaked()) {
      StringAttrInfo const srcVrf("srcVrf", renderer_, line.srcVrf);
      renderer_.addAttributes(" (source VRF %s)", srcVrf.getArg());
   }
   bool directlyConnected = true;
   if (line.hasVias()) {
      directlyConnected = printIpVias(*line.fec, {indent6, 0});
   } else {
      renderer_.addFrills("\n%s%s", blanks(indent6), forward ? "Cpu" : "Null0");
      auto const vias = JsonScope::list(renderer_, "vias");
   }
   renderer_.addFrills("\n");
   printDirectlyConnectedFlag(directlyConnected);
}

template <class Family>
void RouteRendering<Family>::printDirectlyConnected(Line const& line) {
   printAction(true);
   renderer_.addFrills(" is directly connected");
   if (line.leaked()) {
      StringAttrInfo const srcVrf("srcVrf", renderer_, line.srcVrf);
      renderer_.addAttributes(" (source VRF %s)", srcVrf.getArg());
   }
   renderer_.addFrills(", ");
   {
      auto const vias = JsonScope::list(renderer_, "vias");
      if (line.interface.empty()) {
         renderer_.addFrills("<Internal>");
      } else {
         auto const entry = JsonScope::listEntry(renderer_);
         printViaDetails(*line.fec, 0, "");
      }
   }
   renderer_.addFrills("\n");
   printDirectlyConnectedFlag(true);
}

template <class Family>
void RouteRendering<Family>::printWithoutNexthop(Line const& line) {
   bool const toCpu = line.route.routeType == Family::RouteType::routeCacheConnected;
   printAction(toCpu);
   renderer_.addFrills(" is directly connected");
   printDirectlyConnectedFlag(true);
   if (line.leaked()) {
      StringAttrInfo const srcVrf("srcVrf", renderer_, line.srcVrf);
      renderer_.addAttributes(" (source VRF %s)", srcVrf.getArg());
   }
   renderer_.addFrills(", %s\n", toCpu ? "Cpu" : "Null0");
   auto const vias = JsonScope::list(renderer_, "vias");
}

template <class Family>
bool RouteRendering<Family>::printIpVias(CachedFec const& fec, Layout const& layout) {
   auto const* const listName = layout.depth == 0 ? "vias" : "resolvedVias";
   auto const list = JsonScope::list(renderer_, listName);
   bool directlyConnected = false;
   U16 index = 0;
   for (auto const& [via, present] : fec.via()) {
      if (printedVias_ == maxPrintedVias || !streams(renderer_)) {
         break;
      }
      ++printedVias_;
      directlyConnected = printIpVia(fec, via, index, layout) || directlyConnected;
      ++index;
   }
   for (U32 i = 0; i < fec.viaEvpnEntry.size(); ++i) {
      auto const entry = JsonScope::listEntry(renderer_);
      startViaLine(index++, layout);
      printEvpnVia(*fec.viaEvpnEntry.find(static_cast<U16>(i)));
   }
   return directlyConnected;
}

// Over VXLAN: the far tunnel end in place of a next hop.
template <class Family>
void RouteRendering<Family>::printEvpnVia(Tunnel::TunnelTable::EvpnVxlanTunnelEntry const& entry) {
   StringAttrInfo const vtepAddr("vtepAddr", renderer_, entry.vtepAddr);
   cliprint::Attr32Info const vni("vni", renderer_, entry.vni.value());
   StringAttrInfo const routerMac("routerMac", renderer_, entry.routerMac);
   renderer_.addFrills("via");
   renderer_.addAttributes(" VTEP %s VNI %u router-mac %s", vtepAddr.getArg(), vni.getArg(), routerMac.getArg());
   if (entry.localIntf.isValid() && sorter_.inputs().showLocalInterface) {
      StringAttrInfo const localInterface("localInterface", renderer_, entry.localIntf);
      renderer_.addAttributes(" local-interface %s", localInterface.getArg());
   }
}

template <class Family>
void RouteRendering<Family>::startViaLine(U16 index, Layout const& layout) {
   if (!Family::viasShareRouteLine || index != 0 || layout.depth != 0) {
      renderer_.addFrills("\n%s", blanks(layout.indent + layout.depth * indentPerDepth));
   }
}

template <class Family>
bool RouteRendering<Family>::printIpVia(CachedFec const& fec, CachedVia const& via, U16 index, Layout const& layout) {
   if (layout.depth == maxDepth) {
      return false;
   }
   auto const entry = JsonScope::listEntry(renderer_);
   startViaLine(index, layout);
   std::string_view const nexthop = *fec.nexthopAddr.find(index);
   if (via.intfId.isFecId() && !via.isForwardingVrfAction()) {
      renderer_.addFrills("via");
      auto const* const resolved = preparedFec(Vault::Fib::FecId(via.intfId.fecId()));
      return resolved != nullptr && printIpVias(*resolved, {layout.indent, layout.depth + 1});
   }
   bool const directlyConnected = isDirectlyConnected(nexthop);
   if (via.intfId.isNexthopGroup()) {
      renderer_.addFrills("via");
      printNexthopGroup(via.intfId.nexthopGroupId());
   } else if (!directlyConnected) {
      renderer_.addFrills("via");
      if (!nexthop.empty()) {
         StringAttrInfo const nexthopAddr("nexthopAddr", renderer_, nexthop);
         renderer_.addAttributes(" %s", nexthopAddr.getArg());
      }
      printViaDetails(fec, index, ", ");
   } else if constexpr (Family::viasShareRouteLine) {
      renderer_.addFrills("is directly connected");
      printViaDetails(fec, index, ", ");
   } else {
      renderer_.addFrills("via");
      printViaDetails(fec, index, " ");
      renderer_.addFrills(", directly connected");
   }
   if (auto const* const weight = fec.weightText.find(index); weight != nullptr) {
      StringAttrInfo const viaWeight("viaWeight", renderer_, *weight);
      renderer_.addAttributes(", weight %s", viaWeight.getArg());
   }
   return directlyConnected;
}

template <class Family>
void RouteRendering<Family>::printNexthopGroup(Routing::NexthopGroup::NexthopGroupId id) {
   auto const name = sorter_.nexthopGroupName(id);
   auto const object = JsonScope::object(renderer_, "nexthopGroup");
   StringAttrInfo const groupName("groupName", renderer_, name.empty() ? unknownNexthopGroup : name);
   cliprint::Attr32Info const groupId("groupId", renderer_, id);
   renderer_.addAttributes(" %s, Nexthop Group ID %d", groupName.getArg(), groupId.getArg());
}

// The interface, the VRF behind it and its description.
template <class Family>
void RouteRendering<Family>::printViaDetails(CachedFec const& fec, U16 index, char const* interfaceSeparator) {
   if (std::string_view const interface = *fec.interface.find(index); !interface.empty()) {
      renderer_.addFrills("%s", interfaceSeparator);
      StringAttrInfo const name("interface", renderer_, interface);
      renderer_.addAttributes("%s", name.getArg());
   }
   if (auto const* const vrf = fec.vrfName.find(index); vrf != nullptr) {
      StringAttrInfo const egressVrf("egressVrf", renderer_, *vrf);
      renderer_.addAttributes(" (egress VRF %s)", egressVrf.getArg());
   }
   if (auto const* const text = fec.interfaceDescription.find(index); text != nullptr) {
      StringAttrInfo const description("interfaceDescription", renderer_, *text);
      renderer_.addAttributes(" %s", description.getArg());
   }
}

template class RouteRendering<Ipv4>;
template class RouteRendering<Ipv6>;

}  // namespace Kiv
