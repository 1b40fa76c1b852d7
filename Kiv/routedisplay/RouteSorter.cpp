#include "Kiv/routedisplay/RouteSorter.h"

#include "Kiv/common/Legend.h"
#include "Kiv/common/PrintDocument.h"
#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/common/Trace.h"
#include "Kiv/routedisplay/PrintDriver.h"
#include "Kiv/routedisplay/ProgrammedState.h"
#include "Kiv/routedisplay/Selection.h"

#include <string>

namespace Kiv {

template <class Family>
RouteSorterOf<Family>::~RouteSorterOf() = default;

template <class Family>
void RouteSorterOf<Family>::handleInitialized() {
   initialized_ = true;
   trace(8, "handleInitialized", "RouteSorter created for vrfName: ", std::string_view(inputs_.vrfName),
         ", vrfId: ", inputs_.vrfId);
   buildNexthopGroupIdToName();
   if (inputs_.hostRoutes) {
      filterHostPrefixes(*this, Family::Prefix::maxLength);
      return;
   }
   if (!inputs_.routeFilterColl || !inputs_.routeFilterColl->filterAll()) {
      recordInterfaceAddresses();
   }
   filterPrefixes(*this);
   kernelUnprogrammedRouteCounterSmIs();
}

template <class Family>
void RouteSorterOf<Family>::buildNexthopGroupIdToName() {
   if (!inputs_.nexthopGroupEntryStatus) {
      return;
   }
   // Of groups with one id, the last by name; the walk has no order.
   inputs_.nexthopGroupEntryStatus->walk([this](std::string_view name, U32 id) {
      if (nexthopGroupName(id) < name) {
         cachedNexthopGroupIdToName_.insertOrReplace(id, name);
      }
   });
}

template <class Family>
void RouteSorterOf<Family>::recordInterfaceAddresses() {
   if (!inputs_.ipStatus) {
      return;
   }
   for (auto const& [intfId, status] : inputs_.ipStatus->intfStatus()) {
      if (status.vrfName != inputs_.vrfName) {
         continue;
      }
      status.forEachAddr([this, &intf = intfId, &state = status](auto const& address) {
         addressToIntf_.insertOrReplace(address, intf);
         if (Family::recordsLoopbacks && state.loopback) {
            maybeAddLoopbackIpAddr(address, state.vrfId);
         }
      });
   }
}

template <class Family>
void RouteSorterOf<Family>::maybeAddLoopbackIpAddr(typename Family::AddrWithMask const& address, VrfId vrfId) {
   loopbackVrfPrefix_.emplace(vrfId, address.subnet());
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

template <class Family>
bool RouteSorterOf<Family>::printRoutes(U32 fd, U32 fmt, bool printVrf) {
   trace(8, "printRoutes", Family::printRoutesName);
   int const error = printDocument(fd, fmt, [&](cliprint::RendererV2& renderer) {
      if (printVrf) {
         renderer.addFrills("\nVRF: %s\n", inputs_.vrfName);
      }
      if (inputs_.hostRoutes) {
         formatHostRouteOutput(*this, renderer);
      } else {
         formatOutput(*this, renderer);
      }
   });
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
   auto const* const route = sortedRoute_.find(prefix);
   if (route == nullptr) {
      return std::string(width, ' ');
   }
   Zam::assertThat(inputs_.kernelUnprogrammedRoute != nullptr, "kernelUnprogrammedRoute()", traceSource);
   ProgrammedState const programmed(*this);
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
   return sortedRoute_.empty() ? Prefix() : sortedRoute_.begin()->key;
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
