#include "Kiv/KivCliPrint.h"
#include "Kiv/common/Legend.h"
#include "Kiv/routedisplay/OutputParts.h"
#include "Kiv/routedisplay/PrintDriver.h"
#include "Kiv/routedisplay/ProgrammedState.h"
#include "Kiv/routedisplay/ViaTexts.h"
#include "Zam/Clock.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

#include <string>

// The host route table: what the box receives, broadcasts to and reaches directly, an address a line.
namespace Kiv {

namespace {

using cliprint::BoolAttrInfo;
using cliprint::JsonScope;
using cliprint::RendererV2;
using cliprint::StringAttrInfo;

// Here a tunnel shows as the interface that stands for it: there is no room for its ways.
Zam::String hostInterfaceText(CachedVia const& via) {
   return via.intfId.isDynamicTunnel() ? Zam::String(via.intfId.stringValue()) : interfaceText(via);
}

// Texts and to-CPU marks of the FEC's vias, once per FEC. A via that has an interface but no address is the box itself,
// except on routes that stand for the link; one into a tunnel, a group or another FEC leads away from it.
template <class Family>
void prepareHostVias(CachedFec& fec, typename Family::RouteType type) {
   U16 index = 0;
   for (auto const& [via, present] : fec.via()) {
      bool const hasIntf = via.intfId.isValid();
      fec.nexthopAddr.insertOrReplace(index, hasIntf && !via.hop.isZero() ? via.hop.stringValue() : std::string());
      bool const hasText = hasIntf && !fec.vxlanOfVia.contains(via);  // over VXLAN, the address says it all
      fec.interface.insertOrReplace(index, hasText ? hostInterfaceText(via) : Zam::String());
      if (!hasIntf || (via.hop.isZero() && via.intfId.isNamed() && !Family::isLinkRoute(type))) {
         fec.hostToCpu.insert(index);
      } else {
         fec.hostToCpu.erase(index);
      }
      ++index;
   }
   fec.preparedVias = index;
}

template <class Family>
class HostRouteRendering {
 public:
   using Route = typename Family::Route;

   HostRouteRendering(RouteSorterOf<Family> const& sorter, RendererV2& renderer)
       : sorter_(sorter),
         renderer_(renderer),
         programmed_(sorter) {}

   void printRoute(Route const& route) {
      auto const fec = sorter_.fec(route.fecId);
      if (fec && fec->preparedVias == fec->viaEvpnEntry.size()) {
         prepareHostVias<Family>(*fec, route.routeType);
      }
      StringAttrInfo const prefix("prefix", renderer_, route.prefix);
      auto const entry = JsonScope::dictEntry(renderer_, prefix);
      cliprint::HardwareProgrammedAttrInfo hardware("hardwareProgrammed", renderer_);
      hardware.setValue(programmed_.inHardware(route.prefix));
      cliprint::HostRouteTypeAttrInfo type("routeType", renderer_);
      type.setValue(route.routeType);
      renderer_.addAttributes("%s%s", hardware.getArg(), type.getArg());
      auto const addressWidth =
          static_cast<std::size_t>(renderer_.addArgs<typename Family::Addr>("%s", route.prefix.address()));
      auto const vias = JsonScope::list(renderer_, "vias");
      if (Family::isToCpu(route.routeType)) {
         printToCpu();
      } else if (fec && isOwnLink(*fec, route)) {
         printOwnLink(*fec);
      } else {
         printVias(fec.get(), addressWidth);
      }
   }

 private:
   // A single via out of an interface to the very address of the route.
   static bool isOwnLink(CachedFec const& fec, Route const& route) {
      if (fec.vias() != 1) {
         return false;
      }
      auto const& via = fec.via().begin()->key;
      return via.intfId.isValid() && !via.hop.isZero() && via.hop == Lumen::IpGenAddr(route.prefix.address());
   }

   void printToCpu() {
      auto const entry = JsonScope::listEntry(renderer_);
      BoolAttrInfo const toCpu("toCpu", renderer_, true);
      renderer_.addAttributes("", toCpu.getArg());
      renderer_.addFrills(" to cpu\n");
   }

   void printOwnLink(CachedFec const& fec) {
      auto const entry = JsonScope::listEntry(renderer_);
      BoolAttrInfo const toCpu("toCpu", renderer_, false);
      renderer_.addAttributes("", toCpu.getArg());
      StringAttrInfo const interface("interface", renderer_, *fec.interface.find(0));
      renderer_.addAttributes(" on %s\n", interface.getArg());
   }

   void printVias(CachedFec const* fec, std::size_t addressWidth) {
      U32 const vias = fec != nullptr ? fec->vias() : 0;
      for (U16 i = 0; i < vias; ++i) {
         auto const entry = JsonScope::listEntry(renderer_);
         if (i != 0) {
            renderer_.startLine(addressWidth + 4);
         }
         printVia(*fec, i);
      }
      renderer_.addFrills("\n");
   }

   void printVia(CachedFec const& fec, U16 index) {
      if (auto const& text = *fec.nexthopAddr.find(index); !text.empty()) {
         StringAttrInfo const nexthopAddr("nexthopAddr", renderer_, text);
         renderer_.addAttributes(" via %s", nexthopAddr.getArg());
      }
      bool const isToCpu = fec.hostToCpu.contains(index);
      BoolAttrInfo const toCpu("toCpu", renderer_, isToCpu);
      renderer_.addAttributes("", toCpu.getArg());
      if (isToCpu) {
         renderer_.addFrills(" to cpu");
      }
      if (auto const& text = *fec.interface.find(index); !text.empty()) {
         StringAttrInfo const interface("interface", renderer_, text);
         renderer_.addAttributes(" on %s", interface.getArg());
      }
   }

   RouteSorterOf<Family> const& sorter_;
   RendererV2& renderer_;
   ProgrammedState programmed_;
};

}  // namespace

template <class Family>
void formatHostRouteOutput(RouteSorterOf<Family>& sorter, RendererV2& renderer) {
   double const printStartTime = Zam::currentTime();
   bool const hardwareWarning = hardwareUnprogrammed(sorter);
   if (hardwareWarning) {
      addHardwareWarning(renderer);
      renderer.addFrills("%s", warningSeparator);
   }
   renderer.addFrills("%s\n", Family::hostLegend);
   BoolAttrInfo const disabled("routingDisabled", renderer, routingDisabled(sorter));
   BoolAttrInfo const hardware("allRoutesProgrammedHardware", renderer, !hardwareWarning);
   renderer.addAttributes("", disabled.getArg(), hardware.getArg());
   renderer.ioflush();
   {
      auto const routes = JsonScope::object(renderer, "routes");
      HostRouteRendering<Family> rendering(sorter, renderer);
      for (auto const& [prefix, route] : sorter.sortedRoute()) {
         rendering.printRoute(route);
         if (!streams(renderer)) {
            break;
         }
      }
   }
   renderer.addFrills("\n");
   addTimings(renderer, sorter.inputs().startTime, printStartTime);
}

template void formatHostRouteOutput(RouteSorterOf<Ipv4>&, RendererV2&);
template void formatHostRouteOutput(RouteSorterOf<Ipv6>&, RendererV2&);

}  // namespace Kiv
