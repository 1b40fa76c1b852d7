#include "Kiv/routedisplay/Types.h"

#include "Kiv/routedisplay/FilteredRoutes.h"
#include "Kiv/routedisplay/RouteSorter.h"
#include "Zam/TypeRegistry.h"

#include <utility>

namespace Kiv {

namespace {

// The inputs are the constructor's arguments and, under their names, the sorter's attributes.
template <class Sorter>
void registerSorter(char const* name) {
   auto builder = Zam::TypeRegistry::instance().entity<Sorter>(name);
   builder.template constructorFrom<typename Sorter::Inputs>(
       [](typename Sorter::Inputs inputs) { return Zam::makePtr<Sorter>(std::move(inputs)); });
   builder.attributesOf(&Sorter::inputs);
   builder.attribute("initialized", &Sorter::initialized)
       .collection("sortedRoute", &Sorter::sortedRoute, &Sorter::sortedRouteIs, &Sorter::sortedRouteDel,
                   &Sorter::sortedRouteDelAll)
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
       .operation("kernelUnprogrammedRouteCounterSmIs", &Sorter::kernelUnprogrammedRouteCounterSmIs)
       .operation("kernelUnprogrammedRouteCounterSmDel", &Sorter::kernelUnprogrammedRouteCounterSmDel);
}

}  // namespace

void registerSorterTypes() {
   registerSorter<RouteSorter>(Ipv4::sorterName);
   registerSorter<Route6Sorter>(Ipv6::sorterName);
}

}  // namespace Kiv
