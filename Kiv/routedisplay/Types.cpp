#include "Kiv/routedisplay/Types.h"

#include "Kiv/routedisplay/FilteredRoutes.h"
#include "Kiv/routedisplay/RouteSorter.h"
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

}  // namespace

void registerSorterTypes() {
   registerSorter<RouteSorter>(Ipv4::sorterName);
   registerSorter<Route6Sorter>(Ipv6::sorterName);
}

}  // namespace Kiv
