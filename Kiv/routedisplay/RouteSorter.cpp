#include "Kiv/routedisplay/RouteSorter.h"

#include "Kiv/common/Legend.h"
#include "Kiv/common/PrintDocument.h"
#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/common/Trace.h"
#include "Kiv/output/RouteTable.h"
#include "Kiv/selection/DefaultRoute.h"
#include "Zam/Clock.h"

#include <string>

namespace Kiv {

template <class Family>
RouteSorterOf<Family>::RouteSorterOf(Inputs inputs)
    : inputs_(std::move(inputs)),
      fecs_(fecSources(inputs_)),
      selection_(routeTables(inputs_), routeRequest(inputs_), fecs_) {}

template <class Family>
RouteSorterOf<Family>::~RouteSorterOf() = default;

template <class Family>
FecSources RouteSorterOf<Family>::fecSources(Inputs const& in) {
   return {
       .family = Family::addressFamily,
       .vrfId = in.vrfId,
       .forwardingStatus = in.forwardingStatus,
       .forwarding6Status = in.forwarding6Status,
       .forwardingGenStatus = in.forwardingGenStatus,
       .policyForwardingStatus = in.policyForwardingStatus,
       .routeCacheEvpnViaConfig = in.routeCacheEvpnViaConfig,
       .evpnVxlanTunnelTable = in.evpnVxlanTunnelTable,
       .cbfFecOverrideMap = in.cbfFecOverrideMap,
       .interfaceVrf =
           [ipStatus = in.ipStatus](Lumen::IntfId const& intfId) {
              auto const* const status = ipStatus ? ipStatus->intfStatus(intfId) : nullptr;
              bool const isKnown = status != nullptr && status->vrfId != Vrf::VrfIdMap::noVrf;
              return isKnown ? InterfaceVrf{status->vrfId, status->vrfName} : InterfaceVrf();
           },
       .policyStatus = in.policyStatus,
       .vrfIdMap = in.vrfIdMap,
       .allIntfConfig = in.allIntfConfig,
       .tunnels = {.tunnelFib = in.tunnelFib,
                   .tunnelTables = {in.isisSrTunnelTable, in.staticTunnelTable, in.ldpTunnelTable, in.bgpLuTunnelTable,
                                    in.nexthopGroupTunnelTable, in.rsvpLerTunnelTable, in.isisFlexAlgoTunnelTable},
                   .tunnelNames = in.protocolTunnelNameStatus,
                   .flexAlgoConfig = in.flexAlgoConfig}};
}

template <class Family>
RouteTables<Family> RouteSorterOf<Family>::routeTables(Inputs const& in) {
   return {.vrfId = in.vrfId,
           .vrfName = in.vrfName,
           .routingStatus = in.routingStatus,
           .attachedRouteStatus = in.attachedRouteStatus,
           .routeCacheConfig = in.routeCacheConfig,
           .ipStatus = in.ipStatus};
}

template <class Family>
RouteRequest<Family> RouteSorterOf<Family>::routeRequest(Inputs const& in) {
   return {.prefix = in.prefix,
           .longerPrefixes = in.longerPrefixes,
           .protocol = in.protocol,
           .showHidden = in.showHidden,
           .filters = in.routeFilterColl};
}

template <class Family>
void RouteSorterOf<Family>::handleInitialized() {
   initialized_ = true;
   trace(8, "handleInitialized", "RouteSorter created for vrfName: ", std::string_view(inputs_.vrfName),
         ", vrfId: ", inputs_.vrfId);
   buildNexthopGroupIdToName();
   if (inputs_.hostRoutes) {
      selection_.filterHostPrefixes();
      return;
   }
   selection_.filterPrefixes();
   kernelUnprogrammedRouteCounterSmIs();
}

template <class Family>
void RouteSorterOf<Family>::buildNexthopGroupIdToName() {
   if (!inputs_.nexthopGroupEntryStatus) {
      return;
   }
   auto& sources = fecs_.store().sources();
   // Of groups with one id, the last by name; the walk has no order.
   inputs_.nexthopGroupEntryStatus->walk([&sources](std::string_view name, U32 id) {
      if (sources.nexthopGroupName(id) < name) {
         sources.nexthopGroupNames.insertOrReplace(id, name);
      }
   });
}

template <class Family>
void RouteSorterOf<Family>::kernelUnprogrammedRouteCounterSmIs() {
   kernelUnprogrammedRouteCounterSm_.emplace(inputs_.kernelUnprogrammedRoute, inputs_.vrfId,
                                             unprogrammedRouteCountByVrf_);
}

template <class Family>
bool RouteSorterOf<Family>::kernelUnprogrammed() const {
   return kernelUnprogrammedRouteCounterSm_ &&
          kernelUnprogrammedRouteCounterSm_->routeCount(inputs_.vrfId, Family::addressFamily) != 0;
}

// Facts of the tables as they are when the output begins.
template <class Family>
TableFacts RouteSorterOf<Family>::tableFacts() const {
   auto const unprogrammed = safeLookup(inputs_.unprogrammedRouteStatus.get(), [&](auto const& status) {
      return status.unprogrammedRouteCount(inputs_.vrfId);
   });
   return {.routingDisabled = !inputs_.routingConfig || !inputs_.routingConfig->routing(),
           .hardwareWarning = unprogrammed && unprogrammed->count != 0,
           .kernelWarning = kernelUnprogrammed(),
           .requestTime = inputs_.startTime,
           .printStartTime = Zam::currentTime()};
}

// The routes of the table and those that only the route cache holds.
template <class Family>
U32 RouteSorterOf<Family>::tableSize() const {
   auto const& tables = selection_.tables();
   U64 size = tables.routingStatus ? tables.routingStatus->routes() : 0;
   tables.walkRouteCache([&size](auto const&, auto const&) { ++size; });
   return static_cast<U32>(size);
}

// False when some route has more vias than are shown.
template <class Family>
bool RouteSorterOf<Family>::formatOutput(cliprint::RendererV2& renderer) {
   auto const facts = tableFacts();
   FecDisplay display(fecs_.storePtr());
   ProgrammedState const programmed(inputs_.unprogrammedRouteStatus.get(), inputs_.kernelUnprogrammedRoute.get(),
                                    inputs_.vrfId);
   RouteOutput const output{.display = display,
                            .programmed = programmed,
                            .vrfId = inputs_.vrfId,
                            .nexthopGroupDisplay = inputs_.nexthopGroupDisplay,
                            .showLocalInterface = inputs_.showLocalInterface};
   if (inputs_.hostRoutes) {
      return printHostRoutes<Family>(facts, output, renderer, sortedRoute());
   }
   RouteTable<Family> table(facts, output, renderer);
   bool const isCounted = Family::hasTableHeader && inputs_.prefix.isNullPrefix();
   table.printAbove({.requested = inputs_.prefix,
                     .hasMask = inputs_.prefixHasMask,
                     .selected = selectedRoutes(),
                     .total = isCounted ? tableSize() : 0},
                    legend());
   auto const found = defaultRoute(selection_, inputs_.routeList.get());
   table.printDefaultRoute(found.state, found.isShown, found.route ? &*found.route : nullptr);
   sortedRouteDel(DefaultRoute<Family>::prefix());
   table.printRoutes(sortedRoute());
   return !table.leftOutVias();
}

template <class Family>
bool RouteSorterOf<Family>::printRoutes(U32 fd, U32 fmt, bool printVrf) {
   trace(8, "printRoutes", Family::printRoutesName);
   bool showsAll = true;
   int error = printDocument(fd, fmt, [&](cliprint::RendererV2& renderer) {
      if (printVrf) {
         renderer.addFrills("\nVRF: %s\n", inputs_.vrfName);
      }
      showsAll = formatOutput(renderer);
   });
   error = error == 0 && !showsAll ? EOVERFLOW : error;
   outputError_ = error == EINTR ? 0 : error;  // an interrupt is no error
   return error == 0;
}

template <class Family>
Zam::String RouteSorterOf<Family>::legend() const {
   if constexpr (Family::switchReducesLegend) {
      return inputs_.familySwitch ? isisLegend : routeLegend;
   } else {
      return route6Legend;
   }
}

template <class Family>
Zam::String RouteSorterOf<Family>::protocolString(Prefix const& prefix) const {
   constexpr std::size_t width = 5;
   auto const* const route = sortedRoute().find(prefix);
   if (route == nullptr) {
      return std::string(width, ' ');
   }
   Zam::assertThat(inputs_.kernelUnprogrammedRoute != nullptr, "kernelUnprogrammedRoute()", traceSource);
   ProgrammedState const programmed(inputs_.unprogrammedRouteStatus.get(), inputs_.kernelUnprogrammedRoute.get(),
                                    inputs_.vrfId);
   std::string text(programmed.inHardware(prefix) ? " " : "*");
   text += pcode(route->routeType);
   text += programmed.inKernel(prefix) ? "" : "%";
   text.resize(std::max(text.size(), width), ' ');
   return text;
}

template <class Family>
typename Family::Prefix RouteSorterOf<Family>::longestPrefixMatch() const {
   Zam::assertThat(!inputs_.prefix.isNullPrefix() && !inputs_.longerPrefixes && sortedRoutes() <= 1,
                   "!prefix().isNullPrefix() && !longerPrefixes() && sortedRoutes() <= 1", traceSource,
                   "longestPrefixMatch");
   return sortedRoute().empty() ? Prefix() : sortedRoute().begin()->key;
}

template class RouteSorterOf<Ipv4>;
template class RouteSorterOf<Ipv6>;

RouteSorter::~RouteSorter() = default;
Route6Sorter::~Route6Sorter() = default;

Zam::Ptr<RouteSorter> routeSorterFactory(RouteSorter::Inputs inputs) {
   return Zam::makePtr<RouteSorter>(std::move(inputs));
}

Zam::Ptr<Route6Sorter> route6SorterFactory(Route6Sorter::Inputs inputs) {
   return Zam::makePtr<Route6Sorter>(std::move(inputs));
}

}  // namespace Kiv
