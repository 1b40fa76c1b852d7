#include "Kiv/routedisplay/RouteRendering.h"

#include "Kiv/KivCliPrint.h"
#include "Kiv/common/Trace.h"
#include "Kiv/routedisplay/OutputParts.h"
#include "Kiv/routedisplay/ViaTexts.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

namespace Kiv {

namespace {

using cliprint::JsonScope;
using cliprint::StringAttrInfo;

constexpr std::size_t prefixColumn = 10;
constexpr std::size_t indent6 = 11;
// What is kept to print it again: of one FEC, of all, and of how many. Vias by the hundred are printed anew each time.
constexpr std::size_t maxRecordingSize = 4096;
constexpr std::size_t maxRecordedSize = std::size_t{16} << 20U;
constexpr std::size_t maxFecTexts = 65'536;

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

// The texts of FECs lie all over the memory; they are asked for some routes ahead, in two steps.
template <class Family>
void RouteRendering<Family>::printRoutes(typename RouteSorterOf<Family>::SortedRoutes const& routes) {
   constexpr std::size_t indexAhead = 16;
   constexpr std::size_t textAhead = 8;
   auto const end = routes.end();
   auto forIndex = routes.begin();
   auto forText = routes.begin();
   std::size_t ahead = 0;
   for (auto const& [prefix, route] : routes) {
      for (; ahead < indexAhead && forIndex != end; ++ahead, ++forIndex) {
         fecTextIndex_.prefetch(forIndex->value.fecId);
         if (ahead >= textAhead) {
            prefetch(forText->value);
            ++forText;
         }
      }
      --ahead;
      printRoute(route);
      if (!streams(renderer_)) {
         return;
      }
   }
}

template <class Family>
void RouteRendering<Family>::prefetch(Route const& route) const {
   if (auto const* const index = fecTextIndex_.find(route.fecId); index != nullptr) {
      renderer_.prefetch(fecTexts_[*index].recording);
   }
}

template <class Family>
void RouteRendering<Family>::printRoute(Route const& route) {
   if (printAgain(route)) [[likely]] {
      return;
   }
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
   } else if (auto const* const group = line.nexthopGroup(); group != nullptr) {
      if (group->nhgId == 0) {
         trace(8, "printRoute", "Skipping route for ", route.prefix, " because nhgId is 0");
         return;
      }
   } else if (line.fec->vias() == 1 && line.fec->viaEvpnEntry.size() == 0) {
      line.via = ViaRendering<Family>::viaLine(*line.fec, 0);
   }
   printFormatRoute(line);
}

// A next hop that is not on the link and has no interface is one that the forwarding agent has not resolved yet.
template <class Family>
bool RouteRendering<Family>::isSuppressed(Line const& line) const {
   auto const& via = line.via;
   return !via.nexthop.empty() && via.interface.empty() && !line.interfaceOptional && via.evpnEntry == nullptr &&
          !isDirectlyConnected(via.nexthop) && !line.hasFecVias() && !line.isNexthopGroupRoute() &&
          !line.isSrTePolicy();
}

template <class Family>
bool RouteRendering<Family>::printFormatRoute(Line const& line) {
   if (isSuppressed(line)) {
      return false;
   }
   auto const entry = JsonScope::dictEntry(renderer_, line.prefix);
   printFlagsAndCode(line, programmed_.inHardware(line.prefix), programmed_.inKernel(line.prefix));
   renderer_.addFrills("%s", line.prefix);
   if constexpr (Family::viasShareRouteLine) {
      printFormatRoute4(line);
   } else {
      printFormatRoute6(line);
   }
   return true;
}

// A route that differs only in its prefix, preference and metric from one that was printed before: nearly all of a
// large table are.
template <class Family>
bool RouteRendering<Family>::printAgain(Route const& route) {
   auto const* const index = fecTextIndex_.find(route.fecId);
   auto const type = static_cast<std::size_t>(route.routeType);
   if (index == nullptr || !fecTexts_[*index].isRecorded || type >= columns_.size() ||
       route.srcVrfId != Vrf::VrfIdMap::noVrf || !programmed_.inHardware(route.prefix) ||
       !programmed_.inKernel(route.prefix)) {
      return false;
   }
   auto const& text = fecTexts_[*index];
   auto const entry = JsonScope::dictEntry(renderer_, route.prefix);
   printColumns(route.routeType);
   renderer_.addFrills("%s", route.prefix);
   std::size_t indent = indent6;
   if (!text.directlyConnected) {
      printPreference(route.preference, route.metric);
      if constexpr (Family::viasShareRouteLine) {
         renderer_.addFrills(" ");
         indent = text.recording.hasLines() ? viaColumn(route.prefix, route.preference, route.metric) : 0;
      }
   }
   renderer_.replay(text.recording, indent);
   return true;
}

// The columns of a route that is programmed, not leaked and forwards.
template <class Family>
void RouteRendering<Family>::printColumns(typename Family::RouteType type) {
   auto& columns = columns_[static_cast<std::size_t>(type)];
   if (columns) [[likely]] {
      renderer_.replay(*columns, 0);
      return;
   }
   renderer_.startRecording(0);
   printFlagsAndCode({.routeType = type}, true, true);
   printAction(true);
   if (cliprint::Recording recording; renderer_.endRecording(recording, maxRecordingSize)) {
      columns = recording;
   }
}

// Null for the first route with the FEC.
template <class Family>
typename RouteRendering<Family>::FecText* RouteRendering<Family>::fecText(Vault::Fib::FecId fecId) {
   if (auto const* const index = fecTextIndex_.find(fecId); index != nullptr) {
      return &fecTexts_[*index];
   }
   if (fecTexts_.size() < maxFecTexts && renderer_.recordedSize() < maxRecordedSize) {
      fecTextIndex_.insertOrReplace(fecId, static_cast<U32>(fecTexts_.size()));
      fecTexts_.emplace_back();
   }
   return nullptr;
}

// What the line's FEC tells, by print() or as that printed it for another route. Recorded for the second one: most FECs
// of a box without a full table have a single route.
template <class Family>
template <class Print>
void RouteRendering<Family>::printFecText(Line const& line, std::size_t indent, bool directlyConnected,
                                          Print const& print) {
   // Of a nexthop group, what is printed depends on the route's type as well.
   auto* const text = line.fec != nullptr && line.nexthopGroup() == nullptr ? fecText(line.fec->fecId()) : nullptr;
   if (text == nullptr) {
      print();
   } else if (text->isRecorded) {
      renderer_.replay(text->recording, indent);
   } else {
      renderer_.startRecording(indent);
      print();
      text->directlyConnected = directlyConnected;
      text->isRecorded = renderer_.endRecording(text->recording, maxRecordingSize);
   }
}

// The flags and the code, then blanks up to the prefix, which starts in the same column whatever precedes it.
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
void RouteRendering<Family>::printPreference(S32 preference, U32 metric) {
   cliprint::S32AttrInfo const preferenceAttr("preference", renderer_, preference);
   cliprint::Attr32Info const metricAttr("metric", renderer_, metric);
   renderer_.addAttributes(" [%d/%u]", preferenceAttr.getArg(), metricAttr.getArg());
}

// Where the vias of an IPv4 route begin that was not leaked.
template <class Family>
std::size_t RouteRendering<Family>::viaColumn(typename Family::Prefix const& prefix, S32 preference, U32 metric) {
   char text[Family::Prefix::maxTextLength];
   return prefixColumn + prefix.formatTo(text) + digits(static_cast<U32>(preference)) + digits(metric) +
          std::string_view(" [/] ").size();
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
void RouteRendering<Family>::printFormatRoute4(Line const& line) {
   if (isDirectlyConnected(line.via.nexthop) && line.via.evpnEntry == nullptr && !line.via.isIpInIp() &&
       !line.hasPolicies()) {
      printAction(true);
      auto const print = [&] { printDirectlyConnected(line); };
      if (line.leaked()) {
         print();
      } else {
         printFecText(line, 0, true, print);
      }
      return;
   }
   bool const hasVia = !line.via.nexthop.empty() || !line.via.interface.empty() || line.via.evpnEntry != nullptr;
   if (!line.hasFecVias() && !hasVia && !line.hasPolicies()) {
      printWithoutNexthop(line);
      return;
   }
   printAction(true);
   printPreference(line.preference, line.metric);
   std::size_t indent = viaColumn(line.prefix, line.preference, line.metric);
   bool const onLinesBelow = line.isSrTePolicy() && !line.hasFecVias();  // then no blank ends the route's line
   renderer_.addFrills("%s", onLinesBelow && !line.leaked() ? "" : " ");
   if (line.leaked()) {
      indent += static_cast<std::size_t>(printSrcVrfHeader(renderer_, line.srcVrf));
   }
   auto const print = [&] { printFecVias(line, indent); };
   if (onLinesBelow) {
      print();
   } else {
      printFecText(line, indent, false, print);
   }
}

// The same in the layout of IPv6 prefixes: every via on a line of its own, at one fixed width.
template <class Family>
void RouteRendering<Family>::printFormatRoute6(Line const& line) {
   bool const hasVia = line.hasFecVias() || line.hasPolicies() || !line.via.nexthop.empty() ||
                       !line.via.interface.empty() || line.via.evpnEntry != nullptr;
   bool const forward = hasVia || line.routeType == Family::RouteType::routeCacheConnected;
   printAction(forward);
   printPreference(line.preference, line.metric);
   printSrcVrf(line);
   if (hasVia) {
      printFecText(line, indent6, false, [&] { printFecVias(line, indent6); });
      return;
   }
   renderer_.startLine(indent6);
   renderer_.addFrills("%s\n", forward ? "Cpu" : "Null0");
   printDirectlyConnectedFlag(true);
   auto const vias = JsonScope::list(renderer_, "vias");
}

template <class Family>
void RouteRendering<Family>::printDirectlyConnected(Line const& line) {
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
         auto details = line.via;  // the link needs no share of the traffic and no label
         details.weight = {};
         details.label = {};
         details.labelOperation = nullptr;
         vias_.printViaDetails(details);
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

// All that follows the metric.
template <class Family>
void RouteRendering<Family>::printFecVias(Line const& line, std::size_t indent) {
   bool directlyConnected = false;
   auto const* const group = line.nexthopGroup();
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
