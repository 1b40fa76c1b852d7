#include "Kiv/CliSupport.h"

#include "Kiv/config/Types.h"
#include "Kiv/nexthopgroup/Types.h"
#include "Kiv/summary/Types.h"
#include "Zam/TypeRegistry.h"

#include <tuple>
#include <type_traits>
#include <utility>

namespace Kiv {

namespace {

template <class Sorter>
constexpr auto const& inputAttributes = Zam::descriptionOf<typename Sorter::Inputs>.attributes;

template <class Sorter, std::size_t I>
using InputType = typename std::tuple_element_t<I, std::remove_cvref_t<decltype(inputAttributes<Sorter>)>>::Type;

template <class Sorter, class... Arguments>
Zam::Ptr<Sorter> constructed(Arguments... arguments) {
   return Zam::makePtr<Sorter>(Sorter::Inputs::fromArguments(std::move(arguments)...));
}

// The inputs are the constructor's arguments and, under their names, the sorter's attributes.
template <class Sorter, std::size_t... I>
void registerInputs(Zam::TypeBuilder<Sorter>& builder, std::index_sequence<I...>) {
   builder.constructor(&constructed<Sorter, InputType<Sorter, I>...>);
   (builder.attribute(
        std::get<I>(inputAttributes<Sorter>).name,
        +[](Sorter const& sorter) -> InputType<Sorter, I> {
           return sorter.inputs().*std::get<I>(inputAttributes<Sorter>).member;
        }),
    ...);
}

template <class Sorter>
void registerSorter(char const* name) {
   auto builder = Zam::TypeRegistry::instance().entity<Sorter>(name);
   constexpr auto inputs = std::tuple_size_v<std::remove_cvref_t<decltype(inputAttributes<Sorter>)>>;
   registerInputs<Sorter>(builder, std::make_index_sequence<inputs>());
   builder.attribute("initialized", &Sorter::initialized)
       .attribute("sortedRoute", &Sorter::sortedRoute)
       .attribute("sortedRoutes", &Sorter::sortedRoutes)
       .attribute("selectedRoutes", &Sorter::selectedRoutes)
       .attribute("hasV6Nexthop", &Sorter::hasV6Nexthop)
       .attribute("outputError", &Sorter::outputError)
       .operation("legend", &Sorter::legend)
       .operation("printRoutes", &Sorter::printRoutes)
       .operation("protocolString", &Sorter::protocolString)
       .operation("longestPrefixMatch", &Sorter::longestPrefixMatch)
       .operation("fec", &Sorter::fec)
       .operation("fecIs", &Sorter::fecIs)
       .operation("fecHas", &Sorter::fecHas)
       .operation("fecDel", &Sorter::fecDel)
       .operation("fecDelAll", &Sorter::fecDelAll)
       .operation(
           "getFilteredRoutesCount", +[](Sorter& sorter) { return getFilteredRoutesCount(&sorter); })
       .operation("sortedRouteIs", &Sorter::sortedRouteIs)
       .operation("sortedRouteDel", &Sorter::sortedRouteDel)
       .operation("sortedRouteDelAll", &Sorter::sortedRouteDelAll)
       .operation("kernelUnprogrammedRouteCounterSmIs", &Sorter::kernelUnprogrammedRouteCounterSmIs)
       .operation("kernelUnprogrammedRouteCounterSmDel", &Sorter::kernelUnprogrammedRouteCounterSmDel);
}

void registerFecCache() {
   auto& registry = Zam::TypeRegistry::instance();
   registry.value<CachedVia>()
       .attribute("fecId", &CachedVia::fecId, &CachedVia::fecIdIs)
       .attribute("tunnelId", &CachedVia::tunnelId, &CachedVia::tunnelIdIs)
       .attribute("forwardingVrf", &CachedVia::forwardingVrf, &CachedVia::forwardingVrfIs)
       .operation("isForwardingVrfAction", &CachedVia::isForwardingVrfAction);
   registry.value<CachedNhgVia>();
   registry.value<CachedFallbackVia>();
   registry.value<PolicyInfo>();
   registry.value<PolicyInfoSet>();
   registry.value<ColoredTepInfo>();
   registry.value<CbfInfo>();
   registry.value<CbfInfoSet>();
   registry.entity<CachedFec>("Kiv::CachedFec")
       .constructor(&cachedFecFactory)
       .attribute("fecId", &CachedFec::fecId)
       .attribute("via", &CachedFec::via)
       .attribute("vias", &CachedFec::vias)
       .operation("viaIs", &CachedFec::viaIs)
       .operation("viaDel", &CachedFec::viaDel)
       .operation("viaDelAll", &CachedFec::viaDelAll)
       .attribute("primaryVias", &CachedFec::primaryVias)
       .attribute("preparedVias", &CachedFec::preparedVias)
       .attribute("hasBackup", &CachedFec::hasBackup)
       .attribute("hierarchical", &CachedFec::hierarchical)
       .attribute("weightSum", &CachedFec::weightSum)
       .collection("viaTypeString", &CachedFec::viaTypeString)
       .collection("nexthopAddr", &CachedFec::nexthopAddr)
       .collection("interface", &CachedFec::interface)
       .collection("vrfId", &CachedFec::vrfId)
       .collection("vrfName", &CachedFec::vrfName)
       .collection("interfaceDescription", &CachedFec::interfaceDescription)
       .collection("label", &CachedFec::label)
       .collection("viaForwardingAction", &CachedFec::viaForwardingAction)
       .collection("viaEvpnEntry", &CachedFec::viaEvpnEntry)
       .collection("viaLabelStack", &CachedFec::viaLabelStack)
       .collection("hostToCpu", &CachedFec::hostToCpu)
       .collection("tunVia", &CachedFec::tunVia)
       .collection("tunViaBackupVia", &CachedFec::tunViaBackupVia)
       .collection("tunViaPolicyInfoSet", &CachedFec::tunViaPolicyInfoSet)
       .collection("ipEncapTunInfo", &CachedFec::ipEncapTunInfo)
       .collection("nhgVia", &CachedFec::nhgVia)
       .collection("nhgName", &CachedFec::nhgName)
       .collection("fallbackVia", &CachedFec::fallbackVia)
       .collection("viaWeight", &CachedFec::viaWeight);
}

template <class Filter>
Zam::TypeBuilder<Filter> filterType(char const* name) {
   return Zam::TypeRegistry::instance().entity<Filter>(name).operation("filter", &Filter::filter);
}

void registerFilters() {
   filterType<RouteFilterBase>("Kiv::RouteFilterBase");
   filterType<RouteFilterIp>("Kiv::RouteFilterIp")
       .constructor(RouteFilterIpIs)
       .attribute("filteringIp", &RouteFilterIp::filteringIp);
   filterType<RouteFilterIntf>("Kiv::RouteFilterIntf")
       .constructor(RouteFilterIntfIs)
       .attribute("filteringIntfStatus", &RouteFilterIntf::filteringIntfStatus);
   filterType<RouteFilterNextHopGroup>("Kiv::RouteFilterNextHopGroup")
       .constructor(RouteFilterNextHopGroupIs)
       .attribute("filteringNextHopGroupId", &RouteFilterNextHopGroup::filteringNextHopGroupId)
       .attribute("filterAll", &RouteFilterNextHopGroup::filterAll);
   filterType<RouteFilterColl>("Kiv::RouteFilterColl")
       .constructor(RouteFilterCollIs)
       .attribute("discardNonMatchingVia", &RouteFilterColl::discardNonMatchingVia)
       .attribute("filterAll", &RouteFilterColl::filterAll, &RouteFilterColl::filterAllIs)
       .attribute("filterColl", &RouteFilterColl::filterColl)
       .operation("filterCollIs", &RouteFilterColl::filterCollIs)
       .operation("filterCollDel", &RouteFilterColl::filterCollDel)
       .operation("filterCollDelAll", &RouteFilterColl::filterCollDelAll);
}

}  // namespace

void registerTypes() {
   registerFecCache();
   registerFilters();
   registerConfigTypes();
   registerSorter<RouteSorter>(Ipv4::sorterName);
   registerSorter<Route6Sorter>(Ipv6::sorterName);
   registerSummaryTypes();
   registerNexthopGroupTypes();
}

}  // namespace Kiv
