#include "programs/kiv/ShowRoute.h"

#include "Kiv/CliSupport.h"
#include "Zam/OrderedMap.h"
#include "Zam/TypeRegistry.h"
#include "programs/kiv/RouteRequest.h"
#include "programs/kiv/Source.h"
#include "programs/kiv/VrfOutput.h"

#include <unistd.h>

namespace kiv {
namespace {

struct Ip4 {
   using Prefix = Lumen::Prefix;
   using Route = Vault::Fib::Route;
   static constexpr char const* sorterType = "Kiv::RouteSorter";
};

struct Ip6 {
   using Prefix = Lumen::Ip6Prefix;
   using Route = Vault::Fib6::Route;
   static constexpr char const* sorterType = "Kiv::Route6Sorter";
};

// What the collection holds, which is taken out of it.
Kiv::RouteFilterColl::Filters withdrawnFilters(std::any& collection) {
   auto const& type = *Zam::TypeRegistry::instance().typeOf(collection);
   auto const filters = std::any_cast<Kiv::RouteFilterColl::Filters>(type.attribute(collection, "filterColl"));
   type.call(collection, "filterCollDelAll", {});
   return filters;
}

void filtersAre(std::any& collection, Kiv::RouteFilterColl::Filters const& filters) {
   auto const& type = *Zam::TypeRegistry::instance().typeOf(collection);
   for (auto const& filter : filters) {
      type.call(collection, "filterCollIs", std::vector<std::any>{filter});
   }
}

// Takes the routes that the filters hide out of the sorter. A sorter that is asked for longer prefixes looks at its
// filters before it has a route's FEC, so it would hide nearly every route; once it is done, it has all FECs.
template <class Family>
void hideFiltered(std::any& sorter, std::any filters) {
   auto const& registry = Zam::TypeRegistry::instance();
   auto const& sorterType = *registry.type(Family::sorterType);
   auto const& filtersType = *registry.typeOf(filters);
   using Routes = Zam::OrderedMap<typename Family::Prefix, typename Family::Route>;
   auto const routes = std::any_cast<Routes>(sorterType.attribute(sorter, "sortedRoute"));
   for (auto const& [prefix, route] : routes) {
      std::vector<std::any> const fec{sorterType.call(sorter, "fec", std::vector<std::any>{route.fecId})};
      if (std::any_cast<bool>(filtersType.call(filters, "filter", fec))) {
         sorterType.call(sorter, "sortedRouteDel", std::vector<std::any>{prefix});
      }
   }
}

// Selects and prints the routes of one VRF; the output of a command is complete when this is ok.
template <class Family>
ExitStatus printVrf(state::Inputs& inputs, state::Inputs::Vrf const& vrf, RouteQuery<typename Family::Prefix> query,
                    cliprint::OutputFormat format) {
   auto const* const type = Zam::TypeRegistry::instance().type(Family::sorterType);
   bool const filtersLater = query.longerPrefixes && query.filters.has_value();
   auto const filters = filtersLater ? withdrawnFilters(query.filters) : Kiv::RouteFilterColl::Filters();
   std::any sorter = type->construct(sorterArguments(inputs, vrf, query));
   if (filtersLater) {
      filtersAre(query.filters, filters);
      hideFiltered<Family>(sorter, query.filters);
   }
   constexpr bool vrfHeader = true;
   std::any const complete =
       type->call(sorter, "printRoutes", std::vector<std::any>{U32{STDOUT_FILENO}, format, vrfHeader});
   if (std::any_cast<bool>(complete)) {
      return ExitStatus::ok;
   }
   S32 const error = std::any_cast<S32>(type->attribute(sorter, "outputError"));
   return error == 0 ? ExitStatus::interrupted : outputFailed(error);
}

ExitStatus checkedTables(state::Inputs const& inputs, ExitStatus status) {
   status = checkedTable(inputs.forwardingStatus, status);
   status = checkedTable(inputs.forwarding6Status, status);
   status = checkedTable(inputs.forwardingGenStatus, status);
   status = checkedTable(inputs.nexthopGroupEntryStatus, status);
   status = checkedTable(inputs.unprogrammedRouteStatus, status);
   return checkedTable(inputs.kernelUnprogrammedRoute, status);
}

template <class Family>
ExitStatus showRoute(Request const& request) {
   Kiv::registerTypes();
   state::Inputs inputs = inputsFrom(request.options.source);
   auto const vrfs = requestedVrfs(inputs, request);
   auto const query = requestedRoutes<typename Family::Prefix>(inputs, request);
   auto const print = [&](state::Inputs::Vrf const& vrf, cliprint::OutputFormat format) {
      return printVrf<Family>(inputs, vrf, query, format);
   };
   ExitStatus status = printPerVrf(request.options.json, vrfs, print);
   for (auto const& vrf : vrfs) {
      status = checkedTable(inputs.routes(vrf.id), status);
      status = checkedTable(inputs.routes6(vrf.id), status);
   }
   return checkedTables(inputs, status);
}

}  // namespace

ExitStatus showIpRoute(Request const& request) {
   return showRoute<Ip4>(request);
}

ExitStatus showIpv6Route(Request const& request) {
   return showRoute<Ip6>(request);
}

}  // namespace kiv
