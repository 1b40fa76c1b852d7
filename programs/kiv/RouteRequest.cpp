#include "programs/kiv/RouteRequest.h"

#include "Zam/TypeRegistry.h"
#include "programs/kiv/RouteClauses.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace kiv {
namespace {

std::runtime_error noSuch(std::string_view what, std::string const& name, Request const& request) {
   return std::runtime_error('"' + name + "\": " + std::string(request.command.words) + ": no such " +
                             std::string(what));
}

Zam::Ptr<Interface::IntfStatus const> requestedInterface(state::Inputs const& inputs, Request const& request) {
   auto const& name = request.value(routeClause::interface);
   auto status = name ? inputs.intfStatus(*name) : nullptr;
   if (name && status == nullptr) {
      throw noSuch("interface", *name, request);
   }
   return status;
}

U32 requestedGroup(state::Inputs const& inputs, std::string const& name, Request const& request) {
   U32 const id = inputs.nexthopGroupEntryStatus->nexthopGroupNameToId(Zam::String(name));
   if (id == 0) {
      throw noSuch("nexthop group", name, request);
   }
   return id;
}

void addFilter(std::any& filters, char const* type, std::vector<std::any> const& arguments) {
   auto const& registry = Zam::TypeRegistry::instance();
   std::vector<std::any> const filter{registry.type(type)->construct(arguments)};
   registry.typeOf(filters)->call(filters, "filterCollIs", filter);
}

// Empty when the command has none.
std::any requestedFilters(state::Inputs const& inputs, Request const& request,
                          Zam::Ptr<Interface::IntfStatus const> const& intfStatus) {
   auto const& nexthop = request.value(routeClause::nexthop);
   auto const& group = request.value(routeClause::nexthopGroup);
   if (!nexthop && !group && intfStatus == nullptr) {
      return {};
   }
   std::vector<std::any> const discardNonMatchingVia{request.has(routeClause::matchingViasOnly)};
   std::any filters = Zam::TypeRegistry::instance().type("Kiv::RouteFilterColl")->construct(discardNonMatchingVia);
   if (nexthop) {
      addFilter(filters, "Kiv::RouteFilterIp", {requestedNexthop(*nexthop)});
   }
   if (intfStatus != nullptr) {
      addFilter(filters, "Kiv::RouteFilterIntf", {intfStatus});
   }
   if (group) {
      bool const any = *group == anyGroup;
      addFilter(filters, "Kiv::RouteFilterNextHopGroup", {any ? U32{0} : requestedGroup(inputs, *group, request), any});
   }
   return filters;
}

}  // namespace

std::vector<state::Inputs::Vrf> vrfsInOrder(state::Inputs const& inputs) {
   auto vrfs = inputs.vrfs();
   std::ranges::sort(vrfs, {}, [](auto const& vrf) {
      return std::pair(vrf.id != Vrf::VrfIdMap::defaultVrf, std::string_view(vrf.name));
   });
   return vrfs;
}

std::vector<state::Inputs::Vrf> requestedVrfs(state::Inputs const& inputs, Request const& request) {
   std::string const name = request.value(routeClause::vrf).value_or(std::string(L3::VrfName::defaultVrf));
   if (name == allVrfs) {
      return vrfsInOrder(inputs);
   }
   state::Inputs::Vrf const* const vrf = inputs.vrf(name);
   if (vrf == nullptr) {
      throw noSuch("VRF", name, request);
   }
   return {*vrf};
}

template <class Prefix>
RouteQuery<Prefix> requestedRoutes(state::Inputs const& inputs, Request const& request) {
   RouteQuery<Prefix> query;
   if (auto const& word = request.value(routeClause::prefix)) {
      query.requested = requestedPrefix<Prefix>(*word);
   }
   query.protocol = request.value(routeClause::protocol).value_or("");
   query.showHidden = request.has(routeClause::all);
   query.hostRoutes = request.has(routeClause::host);
   query.longerPrefixes = request.has(routeClause::longerPrefixes);
   query.intfStatus = requestedInterface(inputs, request);
   query.filters = requestedFilters(inputs, request, query.intfStatus);
   return query;
}

template RouteQuery<Lumen::Prefix> requestedRoutes(state::Inputs const& inputs, Request const& request);
template RouteQuery<Lumen::Ip6Prefix> requestedRoutes(state::Inputs const& inputs, Request const& request);

}  // namespace kiv
