#include "Kiv/KivCliPrint.h"
#include "Kiv/common/PrintDocument.h"
#include "Kiv/output/OutputParts.h"
#include "Kiv/output/RouteTable.h"
#include "Kiv/output/ViaRendering.h"
#include "cliprint/AttrInfo.h"
#include "cliprint/JsonScope.h"

namespace Kiv {

namespace {

using cliprint::BoolAttrInfo;
using cliprint::JsonScope;
using cliprint::RendererV2;
using cliprint::StringAttrInfo;

template <class Family>
class HostRouteRendering {
 public:
   using Route = typename Family::Route;

   HostRouteRendering(RouteOutput const& output, RendererV2& renderer)
       : output_(output),
         renderer_(renderer),
         vias_(output.display, {.sharesRouteLine = true, .showLocalInterface = output.showLocalInterface}, renderer) {}

   void printRoute(Route const& route) {
      auto const fec = output_.display.hostFec(route.fecId, Family::isLinkRoute(route.routeType));
      StringAttrInfo const prefix("prefix", renderer_, route.prefix);
      auto const entry = JsonScope::dictEntry(renderer_, prefix);
      cliprint::HardwareProgrammedAttrInfo hardware("hardwareProgrammed", renderer_);
      hardware.setValue(output_.programmed.inHardware(route.prefix));
      cliprint::HostRouteTypeAttrInfo type("routeType", renderer_);
      type.setValue(route.routeType);
      renderer_.addAttributes("%s%s", hardware.getArg(), type.getArg());
      // Where the vias begin: behind the columns of marker and type, the address and a blank.
      auto const column =
          static_cast<std::size_t>(renderer_.addArgs<typename Family::Addr>("%s", route.prefix.address())) + 5;
      vias_.reset();
      {
         auto const vias = JsonScope::list(renderer_, "vias");
         if (Family::isToCpu(route.routeType)) {
            printToCpu();
         } else if (fec) {
            printVias(*fec, route, column);
         }
      }
      if (fec && !fec->hasVias() && !Family::isToCpu(route.routeType)) {
         vias_.printCarriers(*fec, column);
      }
      vias_.checkAndPrintLeftOut(column);
      renderer_.addFrills("\n");
   }

   bool leftOutVias() const noexcept { return vias_.leftOut(); }

 private:
   // A single via out of an interface to the very address of the route.
   static bool isOwnLink(HostVia const& via, Route const& route) {
      return !via.interface.empty() && !via.nexthop.isZero() && via.nexthop == Lumen::IpGenAddr(route.prefix.address());
   }

   void printToCpu() {
      auto const entry = JsonScope::listEntry(renderer_);
      toCpuIs(true);
   }

   void toCpuIs(bool isToCpu) {
      BoolAttrInfo const toCpu("toCpu", renderer_, isToCpu);
      renderer_.addAttributes("", toCpu.getArg());
      renderer_.addFrills("%s", isToCpu ? " to cpu" : "");
   }

   void printVias(DisplayFec const& fec, Route const& route, std::size_t column) {
      U32 index = 0;
      auto const print = [&](auto const& printVia) {
         auto const entry = JsonScope::listEntry(renderer_);
         if (index++ != 0) {
            renderer_.startLine(column - 1);
         }
         printVia();
      };
      for (U32 i = 0; i < fec.vias(); ++i) {
         auto via = fec.hostVia(i);
         if (fec.vias() == 1 && isOwnLink(via, route)) {
            via.nexthop = {};
         }
         print([&] { via.isLink ? printVia(via) : printLeading([&] { vias_.printVia(fec.via(i), column); }); });
      }
      for (auto const& entry : fec.evpnVias()) {
         print([&] { printLeading([&] { vias_.printEvpnVia(entry); }); });
      }
   }

   // One that leads elsewhere than out of an interface.
   template <class Print>
   void printLeading(Print const& print) {
      toCpuIs(false);
      renderer_.addFrills(" ");
      print();
   }

   void printVia(HostVia const& via) {
      if (!via.nexthop.isZero()) {
         StringAttrInfo const nexthopAddr("nexthopAddr", renderer_, via.nexthop);
         renderer_.addAttributes(" via %s", nexthopAddr.getArg());
      }
      toCpuIs(via.toCpu);
      if (!via.interface.empty()) {
         StringAttrInfo const interface("interface", renderer_, via.interface);
         renderer_.addAttributes(" on %s", interface.getArg());
      }
   }

   RouteOutput const& output_;
   RendererV2& renderer_;
   ViaRendering vias_;
};

}  // namespace

template <class Family>
bool printHostRoutes(TableFacts const& facts, RouteOutput const& output, RendererV2& renderer,
                     Zam::OrderedMap<typename Family::Prefix, typename Family::Route> const& routes) {
   if (facts.hardwareWarning) {
      addHardwareWarning(renderer);
      renderer.addFrills("%s", warningSeparator);
   }
   renderer.addFrills("%s\n", cliprint::OwnText{Family::hostLegend});
   BoolAttrInfo const disabled("routingDisabled", renderer, facts.routingDisabled);
   BoolAttrInfo const hardware("allRoutesProgrammedHardware", renderer, !facts.hardwareWarning);
   renderer.addAttributes("", disabled.getArg(), hardware.getArg());
   renderer.ioflush();
   HostRouteRendering<Family> rendering(output, renderer);
   {
      auto const object = JsonScope::object(renderer, "routes");
      for (auto const& [prefix, route] : routes) {
         rendering.printRoute(route);
         if (!streams(renderer)) {
            break;
         }
      }
   }
   renderer.addFrills("\n");
   addTimings(renderer, facts.requestTime, facts.printStartTime);
   return !rendering.leftOutVias();
}

template bool printHostRoutes<Ipv4>(TableFacts const&, RouteOutput const&, RendererV2&,
                                    Zam::OrderedMap<Ipv4::Prefix, Ipv4::Route> const&);
template bool printHostRoutes<Ipv6>(TableFacts const&, RouteOutput const&, RendererV2&,
                                    Zam::OrderedMap<Ipv6::Prefix, Ipv6::Route> const&);

}  // namespace Kiv
