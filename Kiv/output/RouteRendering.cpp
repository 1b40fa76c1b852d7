#include "Kiv/output/RouteRendering.h"

#include "Kiv/KivCliPrint.h"
#include "Kiv/common/PrintDocument.h"
#include "Kiv/common/Trace.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

#include <string>

namespace Kiv {

namespace {

using cliprint::JsonScope;
using cliprint::StringAttrInfo;

constexpr std::size_t prefixColumn = 10;
constexpr std::size_t indent6 = 11;
constexpr std::string_view severalSrcVrfs = "multiple source VRFs";

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
   bool const several = srcVrf == severalSrcVrfs;
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
   bool const isOwn = route.srcVrfId == Vrf::VrfIdMap::noVrf || route.srcVrfId == output_.vrfId;
   return isOwn ? std::string_view() : output_.display.vrfName(route.srcVrfId);
}

// FECs, and what is recorded of them, lie all over the memory; they are asked for some routes ahead, in steps.
template <class Family>
void RouteRendering<Family>::printRoutes(Zam::OrderedMap<Prefix, Route> const& routes) {
   constexpr std::size_t indexAhead = 24;
   constexpr std::size_t numberAhead = 16;
   constexpr std::size_t viasAhead = 8;
   std::array<FecNumber const*, 32> numbers{};  // of the FECs of the routes ahead, by their place
   auto forIndex = routes.begin();
   auto forNumber = routes.begin();
   auto const end = routes.end();
   std::size_t place = 0;
   std::size_t numbered = 0;
   std::size_t indexed = 0;
   for (auto const& [prefix, route] : routes) {
      for (; indexed <= place + indexAhead && forIndex != end; ++indexed, ++forIndex) {
         output_.display.prefetch(forIndex->value.fecId);
      }
      for (; numbered <= place + numberAhead && forNumber != end; ++numbered, ++forNumber) {
         auto const* const number = output_.display.find(forNumber->value.fecId);
         numbers[numbered % numbers.size()] = number;
         prefetch(number);
      }
      if (auto const ahead = place + viasAhead; ahead < numbered) {
         prefetchVias(numbers[ahead % numbers.size()]);
      }
      printRoute(route, numbers[place++ % numbers.size()]);
      if (!streams(renderer_)) {
         return;
      }
   }
}

template <class Family>
void RouteRendering<Family>::prefetch(FecNumber const* fec) const {
   if (fec == nullptr) {
      return;
   }
   if (auto const* const recorded = recordings_.find(*fec); recorded != nullptr) {
      renderer_.prefetch(recorded->recording);
   } else {
      output_.display.prefetchRecord(*fec);
   }
}

template <class Family>
void RouteRendering<Family>::prefetchVias(FecNumber const* fec) const {
   if (fec != nullptr && recordings_.find(*fec) == nullptr) {
      output_.display.prefetchVias(*fec);
   }
}

// What a recording replays is the body of the line; all before it is printed for each route.
template <class Family>
void RouteRendering<Family>::printRoute(Route const& route, FecNumber const* fec) {
   Line line{.route = route, .srcVrf = srcVrfName(route)};
   auto const* const recorded = recordingFor(line, fec);
   if (recorded == nullptr) {
      line.fec = output_.display.fec(fec);
      return printAnew(line);
   }
   printLine(line, recorded->kind, [&](std::size_t headWidth) {
      bool const moves = recorded->kind != RouteBody::connected && recorded->recording.hasLines();
      renderer_.replay(recorded->recording, moves ? viaColumn(route, headWidth) : 0);
   });
}

// A FEC's body is the same for every route, but where the route is told to be one of a nexthop group, or the source VRF
// stands within the body.
template <class Family>
FecRecording const* RouteRendering<Family>::recordingFor(Line const& line, FecNumber const* fec) const {
   auto const* const recorded = fec != nullptr ? recordings_.find(*fec) : nullptr;
   bool const isOwn = recorded == nullptr || line.route.routeType == Family::RouteType::nexthopGroup ||
                      (line.leaked() && recorded->kind == RouteBody::connected);
   return isOwn ? nullptr : recorded;
}

template <class Family>
void RouteRendering<Family>::printAnew(Line& line) {
   auto const& route = line.route;
   if (line.fec && (route.routeType == Family::RouteType::nexthopGroup || line.fec->isNexthopGroup())) {
      line.group = line.fec->nexthopGroup();
   }
   if (line.lacksGroup()) {
      trace(8, "printRoute", "Skipping route for ", route.prefix, " because nhgId is 0");
      return;
   }
   vias_.reset();
   auto const kind = line.body();
   printLine(line, kind, [&](std::size_t headWidth) {
      auto const print = [&] { printBody(line, kind, headWidth); };
      bool const isOwn = line.group || (line.leaked() && kind == RouteBody::connected);
      if (line.fec && !isOwn && kind != RouteBody::nothing && kind != RouteBody::policies) {
         recordings_.print(*line.fec, kind, kind == RouteBody::connected ? 0 : viaColumn(route, headWidth), print);
      } else {
         print();
      }
   });
}

// `printBody(headWidth)` prints all behind preference, metric and source VRF.
template <class Family>
template <class Body>
void RouteRendering<Family>::printLine(Line const& line, RouteBody kind, Body const& printBody) {
   auto const entry = JsonScope::dictEntry(renderer_, line.route.prefix);
   printColumns(line, kind != RouteBody::nothing || line.isToCpu());
   renderer_.addFrills("%s", line.route.prefix);
   bool const isConnected = kind == RouteBody::connected || kind == RouteBody::nothing;
   printBody(!Family::viasShareRouteLine || !isConnected ? printHead(line, kind) : 0);
}

template <class Family>
struct RouteRendering<Family>::Flags {
   bool inHardware = true;
   bool inKernel = true;
   bool leaked = false;
   bool forward = true;
};

// Nearly all routes are programmed, not leaked and forward: their columns are recorded by type.
template <class Family>
void RouteRendering<Family>::printColumns(Line const& line, bool forward) {
   auto const& prefix = line.route.prefix;
   auto const type = line.route.routeType;
   Flags const flags{output_.programmed.inHardware(prefix), output_.programmed.inKernel(prefix), line.leaked(),
                     forward};
   auto const at = static_cast<std::size_t>(type);
   if (!flags.inHardware || !flags.inKernel || flags.leaked || !forward || at >= columns_.size()) {
      return printColumns(type, flags);
   }
   auto& columns = columns_[at];
   if (columns) [[likely]] {
      return renderer_.replay(*columns, 0);
   }
   renderer_.startRecording(0);
   printColumns(type, flags);
   if (cliprint::Recording recording; renderer_.endRecording(recording, FecRecordings::maxSize)) {
      columns = recording;
   }
}

// The flags and the code, then blanks up to the prefix, which starts in the same column whatever precedes it.
template <class Family>
void RouteRendering<Family>::printColumns(typename Family::RouteType routeType, Flags const& flags) {
   cliprint::HardwareProgrammedAttrInfo hardware("hardwareProgrammed", renderer_);
   hardware.setValue(flags.inHardware);
   cliprint::RouteTypeAttrInfo type("routeType", renderer_);
   type.setValue(routeType);
   cliprint::RouteLeakedAttrInfo leaked("routeLeaked", renderer_);
   leaked.setValue(flags.leaked);
   cliprint::KernelProgrammedAttrInfo kernel("kernelProgrammed", renderer_);
   kernel.setValue(flags.inKernel);
   renderer_.addAttributes("%s%s%s%s", hardware.getArg(), type.getArg(), leaked.getArg(), kernel.getArg());
   std::size_t const flagColumns = flags.leaked ? 4 : 2;
   std::size_t const codeColumns = std::string_view(pcode(routeType)).size();
   renderer_.addFrills("%s", std::string_view(blankText.data(), prefixColumn - flagColumns - codeColumns));
   StringAttrInfo const action("routeAction", renderer_, flags.forward ? "forward" : "drop");
   renderer_.addAttributes("", action.getArg());
}

// Preference, metric and source VRF. The columns that the source VRF takes in front of the vias.
template <class Family>
std::size_t RouteRendering<Family>::printHead(Line const& line, RouteBody kind) {
   if (kind == RouteBody::wayOnly) {
      printFlag("directlyConnected", false);
   }
   printPreference(line.route);
   if constexpr (!Family::viasShareRouteLine) {
      printSrcVrf(line);
      return 0;
   }
   // No blank ends a line that has nothing more.
   renderer_.addFrills("%s", kind == RouteBody::policies && !line.leaked() ? "" : " ");
   return line.leaked() ? static_cast<std::size_t>(printSrcVrfHeader(renderer_, line.srcVrf)) : 0;
}

template <class Family>
void RouteRendering<Family>::printBody(Line const& line, RouteBody kind, std::size_t headWidth) {
   switch (kind) {
      case RouteBody::connected:
         return printConnected(line);
      case RouteBody::nothing:
         return printNothing(line);
      case RouteBody::vias:
      case RouteBody::wayOnly:
      case RouteBody::policies:
         return printVias(line, kind, viaColumn(line.route, headWidth));
   }
}

// Where the vias begin.
template <class Family>
std::size_t RouteRendering<Family>::viaColumn(Route const& route, std::size_t headWidth) {
   if constexpr (!Family::viasShareRouteLine) {
      return indent6;
   }
   char text[Prefix::maxTextLength];
   return prefixColumn + route.prefix.formatTo(text) + digits(U32{route.preference}) + digits(route.metric) +
          std::string_view(" [/] ").size() + headWidth;
}

template <class Family>
void RouteRendering<Family>::printPreference(Route const& route) {
   cliprint::S32AttrInfo const preference("preference", renderer_, route.preference);
   cliprint::Attr32Info const metric("metric", renderer_, route.metric);
   renderer_.addAttributes(" [%d/%u]", preference.getArg(), metric.getArg());
}

template <class Family>
void RouteRendering<Family>::printSrcVrf(Line const& line) {
   if (line.leaked()) {
      StringAttrInfo const srcVrf("srcVrf", renderer_, line.srcVrf);
      bool const several = line.srcVrf == severalSrcVrfs;
      several ? renderer_.addAttributes(" (%s)", srcVrf.getArg())
              : renderer_.addAttributes(" (source VRF %s)", srcVrf.getArg());
   }
}

template <class Family>
void RouteRendering<Family>::printFlag(cliprint::AttrName name, bool value) {
   cliprint::BoolAttrInfo const flag(name, renderer_, value);
   renderer_.addAttributes("", flag.getArg());
}

template <class Family>
void RouteRendering<Family>::printConnected(Line const& line) {
   if constexpr (Family::viasShareRouteLine) {
      renderer_.addFrills(" is directly connected");
      printSrcVrf(line);
      renderer_.addFrills(", ");
   } else {
      renderer_.startLine(indent6);
      renderer_.addFrills("via ");
   }
   {
      auto const vias = JsonScope::list(renderer_, "vias");
      auto const via = line.fec->via(0);
      if (via.interface.empty()) {
         renderer_.addFrills("<Internal>");
      } else {
         auto const entry = JsonScope::listEntry(renderer_);
         vias_.printLink(via);
      }
   }
   renderer_.addFrills("%s\n", Family::viasShareRouteLine ? "" : ", directly connected");
   printFlag("directlyConnected", true);
}

// A drop, or a route to the box itself.
template <class Family>
void RouteRendering<Family>::printNothing(Line const& line) {
   char const* const target = line.isToCpu() ? "Cpu" : "Null0";
   if constexpr (Family::viasShareRouteLine) {
      renderer_.addFrills(" is directly connected");
      printFlag("directlyConnected", true);
      printSrcVrf(line);
      renderer_.addFrills(", %s\n", target);
   } else {
      renderer_.startLine(indent6);
      renderer_.addFrills("%s\n", target);
      printFlag("directlyConnected", true);
   }
   auto const vias = JsonScope::list(renderer_, "vias");
}

template <class Family>
void RouteRendering<Family>::printVias(Line const& line, RouteBody kind, std::size_t indent) {
   bool directlyConnected = false;
   if (kind == RouteBody::policies) {
      vias_.tunnels().printSrTePolicySetModel(line.fec->policies(), indent - 1, indent + 3);
      auto const vias = JsonScope::list(renderer_, "vias");
   } else {
      directlyConnected = printFecVias(line, indent);
   }
   if (kind != RouteBody::wayOnly) {
      printFlag("directlyConnected", directlyConnected);
   }
   if (line.fec) {
      vias_.tunnels().checkAndPrintCbfInfo(line.fec->classes(), indent);
   }
   vias_.checkAndPrintLeftOut(indent);
   renderer_.addFrills("\n");
}

// Whether any of them is directly connected.
template <class Family>
bool RouteRendering<Family>::printFecVias(Line const& line, std::size_t indent) {
   if (line.group && output_.nexthopGroupDisplay) {
      printGroup(*line.group, indent);
      return false;
   }
   if (line.fec) {
      return vias_.printIpVias(*line.fec, indent);
   }
   printUnresolved(line.route.fecId, indent);
   return false;
}

template <class Family>
void RouteRendering<Family>::printGroup(GroupTarget const& group, std::size_t indent) {
   if constexpr (Family::viasShareRouteLine) {
      renderer_.addFrills(" via");  // two blanks in a row, as users know it
   } else {
      renderer_.startLine(indent);
      renderer_.addFrills("via");
   }
   vias_.printNexthopGroup(group);
   auto const vias = JsonScope::list(renderer_, "vias");
}

// What is wrong with a route whose FEC is not there.
template <class Family>
void RouteRendering<Family>::printUnresolved(Vault::Fib::FecId fecId, std::size_t indent) {
   auto const vias = JsonScope::list(renderer_, "vias");
   auto const entry = JsonScope::listEntry(renderer_);
   if constexpr (!Family::viasShareRouteLine) {
      renderer_.startLine(indent);
   }
   StringAttrInfo const nexthopAddr("nexthopAddr", renderer_,
                                    "<FecId " + std::to_string(fecId.value()) + " not found>");
   renderer_.addAttributes("via %s", nexthopAddr.getArg());
}

template class RouteRendering<Ipv4>;
template class RouteRendering<Ipv6>;

}  // namespace Kiv
