#include "Kiv/output/RouteTable.h"

#include "Kiv/output/OutputParts.h"
#include "cliprint/AttrInfo.h"

namespace Kiv {

namespace {

constexpr char const* word(DefaultRouteState state) {
   switch (state) {
      case DefaultRouteState::notSet:
         return "notSet";
      case DefaultRouteState::reachable:
         return "reachable";
      case DefaultRouteState::notReachable:
         return "notReachable";
   }
   return "";
}

}  // namespace

template <class Family>
void RouteTable<Family>::printAbove(TableHeader<Family> const& header, std::string_view legend) {
   printHeader(header);
   printWarnings();
   renderer_.addFrills("%s\n", cliprint::OwnText{legend});
}

template <class Family>
void RouteTable<Family>::printHeader([[maybe_unused]] TableHeader<Family> const& header) {
   if constexpr (Family::hasTableHeader) {
      if (header.requested.isNullPrefix()) {
         renderer_.addFrills("Displaying %u of %u IPv6 routing table entries\n", header.selected, header.total);
      } else if (header.hasMask) {
         renderer_.addFrills("Routing entry for %s\n", header.requested);
      } else {
         renderer_.addFrills("Routing entry for %s\n", header.requested.address());
      }
   }
}

// The warnings, and in the model the flags that say the same. The box belongs to the hardware warning; a kernel warning
// alone has none.
template <class Family>
void RouteTable<Family>::printWarnings() {
   if (facts_.hardwareWarning) {
      addHardwareWarning(renderer_);
   }
   if (facts_.kernelWarning) {
      renderer_.addFrills(
          "WARNING: Some of the routes are not programmed in     \n"
          "kernel, and they are marked with '%%'.                 \n");
   }
   if (facts_.hardwareWarning) {
      renderer_.addFrills("%s", warningSeparator);
   }
   cliprint::BoolAttrInfo const disabled("routingDisabled", renderer_, facts_.routingDisabled);
   cliprint::BoolAttrInfo const hardware("allRoutesProgrammedHardware", renderer_, !facts_.hardwareWarning);
   cliprint::BoolAttrInfo const kernel("allRoutesProgrammedKernel", renderer_, !facts_.kernelWarning);
   renderer_.addAttributes("", disabled.getArg(), hardware.getArg(), kernel.getArg());
}

template <class Family>
void RouteTable<Family>::printDefaultRoute(DefaultRouteState state, bool isShown, Route const* route) {
   cliprint::StringAttrInfo const stateAttr("defaultRouteState", renderer_, word(state));
   renderer_.addAttributes("", stateAttr.getArg());
   if (renderer_.isModel()) {
      renderer_._startJsonObject("routes");
   }
   if (isShown && state == DefaultRouteState::reachable) {
      renderer_.addFrills("Gateway of last resort:\n");
      routes_.printRoute(*route);
      renderer_.addFrills("\n");
   } else if (isShown) {
      bool const isSet = state == DefaultRouteState::notReachable;
      renderer_.addFrills("Gateway of last resort is not %s\n\n", isSet ? "reachable" : "set");
   }
   renderer_.ioflush();
}

template <class Family>
void RouteTable<Family>::printRoutes(Zam::OrderedMap<typename Family::Prefix, Route> const& routes) {
   routes_.printRoutes(routes);
   if (renderer_.isModel()) {
      renderer_.endJsonDict();
   }
   renderer_.addFrills("\n");
   addTimings(renderer_, facts_.requestTime, facts_.printStartTime);
}

template class RouteTable<Ipv4>;
template class RouteTable<Ipv6>;

}  // namespace Kiv
