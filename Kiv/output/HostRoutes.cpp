#include "Kiv/KivCliPrint.h"
#include "Kiv/common/PrintDocument.h"
#include "Kiv/output/OutputParts.h"
#include "Kiv/output/RouteTable.h"
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

   HostRouteRendering(RouteOutput const& output, RendererV2& renderer) : output_(output), renderer_(renderer) {}

   void printRoute(Route const& route) {
      auto const fec = output_.display.hostFec(route.fecId, Family::isLinkRoute(route.routeType));
      StringAttrInfo const prefix("prefix", renderer_, route.prefix);
      auto const entry = JsonScope::dictEntry(renderer_, prefix);
      cliprint::HardwareProgrammedAttrInfo hardware("hardwareProgrammed", renderer_);
      hardware.setValue(output_.programmed.inHardware(route.prefix));
      cliprint::HostRouteTypeAttrInfo type("routeType", renderer_);
      type.setValue(route.routeType);
      renderer_.addAttributes("%s%s", hardware.getArg(), type.getArg());
      auto const addressWidth =
          static_cast<std::size_t>(renderer_.addArgs<typename Family::Addr>("%s", route.prefix.address()));
      auto const vias = JsonScope::list(renderer_, "vias");
      if (Family::isToCpu(route.routeType)) {
         printToCpu();
      } else if (fec && isOwnLink(*fec, route)) {
         printOwnLink(fec->hostVia(0));
      } else {
         printVias(fec, addressWidth);
      }
   }

 private:
   // A single via out of an interface to the very address of the route.
   static bool isOwnLink(DisplayFec const& fec, Route const& route) {
      if (fec.vias() != 1) {
         return false;
      }
      auto const nexthop = fec.hostVia(0).nexthop;
      return !nexthop.isZero() && nexthop == Lumen::IpGenAddr(route.prefix.address());
   }

   void printToCpu() {
      auto const entry = JsonScope::listEntry(renderer_);
      BoolAttrInfo const toCpu("toCpu", renderer_, true);
      renderer_.addAttributes("", toCpu.getArg());
      renderer_.addFrills(" to cpu\n");
   }

   void printOwnLink(HostVia const& via) {
      auto const entry = JsonScope::listEntry(renderer_);
      BoolAttrInfo const toCpu("toCpu", renderer_, false);
      renderer_.addAttributes("", toCpu.getArg());
      StringAttrInfo const interface("interface", renderer_, via.interface);
      renderer_.addAttributes(" on %s\n", interface.getArg());
   }

   void printVias(std::optional<DisplayFec> const& fec, std::size_t addressWidth) {
      U32 const vias = fec ? fec->vias() : 0;
      for (U32 i = 0; i < vias; ++i) {
         auto const entry = JsonScope::listEntry(renderer_);
         if (i != 0) {
            renderer_.startLine(addressWidth + 4);
         }
         printVia(fec->hostVia(i));
      }
      renderer_.addFrills("\n");
   }

   void printVia(HostVia const& via) {
      if (!via.nexthop.isZero()) {
         StringAttrInfo const nexthopAddr("nexthopAddr", renderer_, via.nexthop);
         renderer_.addAttributes(" via %s", nexthopAddr.getArg());
      }
      BoolAttrInfo const toCpu("toCpu", renderer_, via.toCpu);
      renderer_.addAttributes("", toCpu.getArg());
      if (via.toCpu) {
         renderer_.addFrills(" to cpu");
      }
      if (!via.interface.empty()) {
         StringAttrInfo const interface("interface", renderer_, via.interface);
         renderer_.addAttributes(" on %s", interface.getArg());
      }
   }

   RouteOutput const& output_;
   RendererV2& renderer_;
};

}  // namespace

template <class Family>
void printHostRoutes(TableFacts const& facts, RouteOutput const& output, RendererV2& renderer,
                     Zam::OrderedMap<typename Family::Prefix, typename Family::Route> const& routes) {
   if (facts.hardwareWarning) {
      addHardwareWarning(renderer);
      renderer.addFrills("%s", warningSeparator);
   }
   renderer.addFrills("%s\n", Family::hostLegend);
   BoolAttrInfo const disabled("routingDisabled", renderer, facts.routingDisabled);
   BoolAttrInfo const hardware("allRoutesProgrammedHardware", renderer, !facts.hardwareWarning);
   renderer.addAttributes("", disabled.getArg(), hardware.getArg());
   renderer.ioflush();
   {
      auto const object = JsonScope::object(renderer, "routes");
      HostRouteRendering<Family> rendering(output, renderer);
      for (auto const& [prefix, route] : routes) {
         rendering.printRoute(route);
         if (!streams(renderer)) {
            break;
         }
      }
   }
   renderer.addFrills("\n");
   addTimings(renderer, facts.requestTime, facts.printStartTime);
}

template void printHostRoutes<Ipv4>(TableFacts const&, RouteOutput const&, RendererV2&,
                                    Zam::OrderedMap<Ipv4::Prefix, Ipv4::Route> const&);
template void printHostRoutes<Ipv6>(TableFacts const&, RouteOutput const&, RendererV2&,
                                    Zam::OrderedMap<Ipv6::Prefix, Ipv6::Route> const&);

}  // namespace Kiv
