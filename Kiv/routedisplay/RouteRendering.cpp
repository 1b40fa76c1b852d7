#include "Kiv/routedisplay/RouteRendering.h"

#include "Kiv/KivCliPrint.h"
#include "Kiv/routedisplay/Trace.h"
#include "Kiv/routedisplay/ViaTexts.h"
#include "Lumen/IpGenPrefix.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

namespace Kiv {

namespace {

using cliprint::JsonScope;
using cliprint::StringAttrInfo;

constexpr std::size_t prefixColumn = 10;
constexpr std::size_t indent6 = 11;
// The largest piece that a FEC keeps to print it again; vias by the hundred are printed anew for each route.
constexpr std::size_t maxRecordingSize = 4096;

constexpr auto blankText = [] {
   std::array<char, prefixColumn> blanks{};
   blanks.fill(' ');
   return blanks;
}();

constexpr std::size_t digits(U32 number) {
   std::size_t count = 1;
   for (; number >= 10; number /= 10) {
      ++count;
   }
   return count;
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
   vias_.reset();
   Line line{.routeType = route.routeType,
             .prefix = route.prefix,
             .preference = route.preference,
             .metric = route.metric,
             .srcVrf = srcVrfName(route),
             .fec = vias_.preparedFec(route.fecId)};
   if (line.fec == nullptr) {
      if (route.fecId) {
         missingFec_ = "<FecId " + std::to_string(route.fecId.value()) + " not found>";
         line.via.nexthop = missingFec_;
         line.interfaceOptional = true;
      }
   } else if (line.fec->isNexthopGroup()) {
      auto const* const group = line.fec->nhgVia.find(0);
      if (group != nullptr && group->nhgId == 0) {
         trace(8, "printRoute", "Skipping route for ", route.prefix, " because nhgId is 0");
         return;
      }
   } else if (line.fec->vias() == 1) {
      line.via = ViaRendering<Family>::viaLine(*line.fec, 0);
   }
   printFormatRoute(line);
}

// A next hop that is not on the link and has no interface is one that the forwarding agent has not resolved yet.
template <class Family>
bool RouteRendering<Family>::isSuppressed(Line const& line) const {
   auto const& via = line.via;
   return !via.nexthop.empty() && via.interface.empty() && !line.interfaceOptional && via.evpnEntry == nullptr &&
          !isDirectlyConnected(via.nexthop) && !line.hasFecVias() && !line.isNexthopGroup() && !line.isSrTePolicy();
}

template <class Family>
bool RouteRendering<Family>::printFormatRoute(Line const& line) {
   if (isSuppressed(line)) {
      return false;
   }
   StringAttrInfo const prefix("prefix", renderer_, line.prefix);
   auto const entry = JsonScope::dictEntry(renderer_, prefix);
   printColumns(line, prefix.getArg().value);
   if constexpr (Family::viasShareRouteLine) {
      printFormatRoute4(line, prefix.getArg().value.size());
   } else {
      printFormatRoute6(line);
   }
   return true;
}

// The flags and the code, then blanks up to the prefix, which starts in the same column whatever precedes it.
template <class Family>
void RouteRendering<Family>::printColumns(Line const& line, std::string_view prefix) {
   bool const inHardware = programmed_.inHardware(line.prefix);
   bool const inKernel = programmed_.inKernel(line.prefix);
   auto const type = static_cast<std::size_t>(line.routeType);
   if (inHardware && inKernel && !line.leaked() && type < columns_.size()) [[likely]] {
      auto& columns = columns_[type];
      if (columns.isRecorded) [[likely]] {
         renderer_.replay(columns.recording, 0);
      } else {
         renderer_.startRecording(0);
         printFlagsAndCode(line, true, true);
         columns.isRecorded = renderer_.endRecording(columns.recording);
      }
   } else {
      printFlagsAndCode(line, inHardware, inKernel);
   }
   renderer_.addFrills("%s", prefix);
}

template <class Family>
void RouteRendering<Family>::printFlagsAndCode(Line const& line, bool inHardware, bool inKernel) {
   cliprint::HardwareProgrammedAttrInfo hardware("hardwareProgrammed", renderer_);
   hardware.setValue(inHardware);
   cliprint::RouteTypeAttrInfo type("routeType", renderer_);
   type.setValue(line.routeType);
   cliprint::RouteLeakedAttrInfo leaked("routeLeaked", renderer_);
   leaked.setValue(line.leaked());
   cliprint::KernelProgrammedAttrInfo kernel("kernelProgrammed", renderer_);
   kernel.setValue(inKernel);
   renderer_.addAttributes("%s%s%s%s", hardware.getArg(), type.getArg(), leaked.getArg(), kernel.getArg());
   std::size_t const flagColumns = line.leaked() ? 4 : 2;
   std::size_t const codeColumns = std::string_view(pcode(line.routeType)).size();
   renderer_.addFrills("%s", std::string_view(blankText.data(), prefixColumn - flagColumns - codeColumns));
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
   cliprint::S32AttrInfo const preference("preference", renderer_, line.preference);
   cliprint::Attr32Info const metric("metric", renderer_, line.metric);
   renderer_.addAttributes(" [%d/%u]", preference.getArg(), metric.getArg());
}

template <class Family>
void RouteRendering<Family>::printSrcVrf(Line const& line) {
   if (line.leaked()) {
      StringAttrInfo const srcVrf("srcVrf", renderer_, line.srcVrf);
      renderer_.addAttributes(" (source VRF %s)", srcVrf.getArg());
   }
}

template <class Family>
void RouteRendering<Family>::printCbf(Line const& line, std::size_t indent) {
   if (line.fec != nullptr) {
      vias_.tunnels().checkAndPrintCbfInfo(line.fec->cbfInfoSet, indent);
   }
}

// Preference and metric stand before all cases but the two that say where the route leads in their first words.
template <class Family>
void RouteRendering<Family>::printFormatRoute4(Line const& line, std::size_t prefixSize) {
   if (isDirectlyConnected(line.via.nexthop) && line.via.evpnEntry == nullptr && !line.via.isIpInIp() &&
       !line.hasPolicies()) {
      printDirectlyConnected(line);
      return;
   }
   bool const hasVia = !line.via.nexthop.empty() || !line.via.interface.empty() || line.via.evpnEntry != nullptr;
   if (!line.hasFecVias() && !hasVia && !line.hasPolicies()) {
      printWithoutNexthop(line);
      return;
   }
   printAction(true);
   printPreference(line);
   // What policies carry is told on the lines below.
   renderer_.addFrills("%s", !line.isSrTePolicy() || line.hasFecVias() || line.leaked() ? " " : "");
   std::size_t indent = prefixColumn + prefixSize + digits(static_cast<U32>(line.preference)) + digits(line.metric) +
                        std::string_view(" [/] ").size();
   if (line.leaked()) {
      indent += static_cast<std::size_t>(printSrcVrfHeader(renderer_, line.srcVrf));
   }
   printFecVias(line, indent);
}

// The same in the layout of IPv6 prefixes: every via on a line of its own, at one fixed width.
template <class Family>
void RouteRendering<Family>::printFormatRoute6(Line const& line) {
   bool const hasVia = line.hasFecVias() || line.hasPolicies() || !line.via.nexthop.empty() ||
                       !line.via.interface.empty() || line.via.evpnEntry != nullptr;
   bool const forward = hasVia || line.routeType == Family::RouteType::routeCacheConnected;
   printAction(forward);
   printPreference(line);
   printSrcVrf(line);
   if (hasVia) {
      printFecVias(line, indent6);
      return;
   }
   renderer_.startLine(indent6);
   renderer_.addFrills("%s\n", forward ? "Cpu" : "Null0");
   printDirectlyConnectedFlag(true);
   auto const vias = JsonScope::list(renderer_, "vias");
}

template <class Family>
void RouteRendering<Family>::printDirectlyConnected(Line const& line) {
   printAction(true);
   renderer_.addFrills(" is directly connected");
   printSrcVrf(line);
   renderer_.addFrills(", ");
   {
      auto const vias = JsonScope::list(renderer_, "vias");
      if (line.via.interface.empty()) {
         renderer_.addFrills("<Internal>");
      } else {
         auto const entry = JsonScope::listEntry(renderer_);
         vias_.printInterface(line.via, "");
         vias_.printViaDetails(line.via);
      }
   }
   renderer_.addFrills("\n");
   printDirectlyConnectedFlag(true);
}

template <class Family>
void RouteRendering<Family>::printWithoutNexthop(Line const& line) {
   bool const toCpu = line.routeType == Family::RouteType::routeCacheConnected;
   printAction(toCpu);
   renderer_.addFrills(" is directly connected");
   printDirectlyConnectedFlag(true);
   printSrcVrf(line);
   renderer_.addFrills(", %s\n", toCpu ? "Cpu" : "Null0");
   auto const vias = JsonScope::list(renderer_, "vias");
}

// All that follows the metric, as it was printed for another route with the same FEC, or anew.
template <class Family>
void RouteRendering<Family>::printFecVias(Line const& line, std::size_t indent) {
   using State = CachedFec::Printed::State;
   if (line.fec == nullptr) {
      printFecViasAnew(line, indent);
      return;
   }
   auto& printed = line.fec->printed;
   if (printed.format != renderer_.outputFormat()) {
      printed = {.format = renderer_.outputFormat()};
   }
   if (printed.state == State::recorded) [[likely]] {
      renderer_.replay(printed.recording, indent);
   } else if (printed.state == State::once) {
      renderer_.startRecording(indent);
      printFecViasAnew(line, indent);
      if (renderer_.endRecording(printed.recording)) {
         printed.state = State::recorded;
      }
      if (printed.recording.size() > maxRecordingSize) {
         printed = {.state = State::tooLarge, .format = printed.format};
      }
   } else {
      printFecViasAnew(line, indent);
      printed.state = printed.state == State::never ? State::once : printed.state;
   }
}

template <class Family>
void RouteRendering<Family>::printFecViasAnew(Line const& line, std::size_t indent) {
   bool directlyConnected = false;
   auto const* const group = line.isNexthopGroup() && line.fec != nullptr ? line.fec->nhgVia.find(0) : nullptr;
   if (group != nullptr && sorter_.inputs().nexthopGroupDisplay) {
      if constexpr (Family::viasShareRouteLine) {
         renderer_.addFrills(" via");  // two blanks in a row, as users know it
      } else {
         renderer_.startLine(indent);
         renderer_.addFrills("via");
      }
      vias_.printNexthopGroup(*group);
      auto const vias = JsonScope::list(renderer_, "vias");
   } else if (line.hasFecVias()) {
      directlyConnected = vias_.printIpVias(*line.fec, indent);
   } else if (line.isSrTePolicy()) {
      vias_.tunnels().printSrTePolicySetModel(line.fec->policyInfoSet, indent - 1, indent + 3);
      auto const vias = JsonScope::list(renderer_, "vias");
   } else {
      printSingleVia(line, indent);
   }
   printCbf(line, indent);
   renderer_.addFrills("\n");
   printDirectlyConnectedFlag(directlyConnected);
}

// A via that no FEC tells of.
template <class Family>
void RouteRendering<Family>::printSingleVia(Line const& line, std::size_t indent) {
   Zam::assertThat(!line.via.interface.empty() || line.interfaceOptional || line.via.evpnEntry != nullptr, "false",
                   traceSource);
   auto const vias = JsonScope::list(renderer_, "vias");
   auto const entry = JsonScope::listEntry(renderer_);
   if constexpr (!Family::viasShareRouteLine) {
      renderer_.startLine(indent);
   }
   renderer_.addFrills("via");
   vias_.printViaLine(line.via);
}

template class RouteRendering<Ipv4>;
template class RouteRendering<Ipv6>;

}  // namespace Kiv
