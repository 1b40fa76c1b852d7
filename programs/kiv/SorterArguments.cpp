#include "programs/kiv/SorterArguments.h"

#include "Lumen/Ip6Prefix.h"
#include "Lumen/Prefix.h"
#include "Zam/TypeRegistry.h"

namespace kiv {
namespace {

// The members that only one family has, or that it has of its own.
struct OfFamily {
   state::Inputs::OfVrf vrf;
   std::any routes;
   std::any attachedRoutes;
   std::any ipStatus;
   std::any hardwareStatus;
   std::any prefix;
};

std::any noFilters() {
   auto const* const type = Zam::TypeRegistry::instance().type("Kiv::RouteFilterColl");
   constexpr bool discardNonMatchingVia = false;
   return type->construct(std::vector<std::any>{discardNonMatchingVia});
}

std::vector<std::any> tableArguments(state::Inputs const& inputs, OfFamily const& family) {
   return {family.vrf.routingConfig,
           family.vrf.routeList,
           family.routes,
           inputs.forwardingStatus,
           inputs.forwarding6Status,
           inputs.forwardingGenStatus,
           inputs.tunnelFib,
           family.attachedRoutes,
           inputs.vrfIdMap,
           inputs.allIntfConfig,
           family.ipStatus,
           family.hardwareStatus,
           inputs.nexthopGroupEntryStatus,
           inputs.kernelUnprogrammedRoute};
}

std::vector<std::any> tunnelTableArguments(state::Inputs const& inputs) {
   return std::apply([](auto const&... table) { return std::vector<std::any>{table...}; }, inputs.tunnelTables);
}

std::vector<std::any> requestArguments(state::Inputs::Vrf const& vrf, OfFamily const& family, RouteQuery const& query) {
   constexpr bool hostRoutes = false;
   constexpr S32 reserved31 = 0;
   constexpr double noTimings = 0;
   constexpr bool prefixHasMask = false;
   return {family.prefix,
           nullptr,  // interface of the request
           Zam::String(query.protocol),
           query.showHidden,
           query.longerPrefixes,
           vrf.name,
           vrf.id,
           hostRoutes,
           reserved31,
           noTimings,
           prefixHasMask};
}

std::vector<std::any> displayArguments(state::Inputs const& inputs) {
   constexpr bool nexthopGroupDisplay = true;
   constexpr bool showLocalInterface = true;
   constexpr bool reserved39 = false;
   return {inputs.cbfFecOverrideMap,
           inputs.policyStatus,
           inputs.policyForwardingStatus,
           nexthopGroupDisplay,
           showLocalInterface,
           reserved39,
           inputs.unprogrammedRouteStatus,
           noFilters(),
           inputs.l3Config,
           inputs.routeCacheConfig,
           inputs.routeCacheEvpnViaConfig,
           inputs.secondRouteConfig};
}

void append(std::vector<std::any>& arguments, std::vector<std::any> more) {
   arguments.insert(arguments.end(), more.begin(), more.end());
}

std::vector<std::any> lastArguments(state::Inputs const& inputs) {
   constexpr bool reserved49 = false;
   return {inputs.protocolTunnelNameStatus, inputs.flexAlgoConfig, reserved49};
}

}  // namespace

std::vector<std::any> sorterArguments(state::Inputs& inputs, state::Inputs::Vrf const& vrf, RouteQuery const& query) {
   OfFamily const family{vrf.ip,          inputs.routes(vrf.id),        inputs.attachedRouteStatus,
                         inputs.ipStatus, inputs.routingHardwareStatus, Lumen::Prefix()};
   constexpr bool isisOnlyLegend = false;
   std::vector<std::any> arguments = tableArguments(inputs, family);
   append(arguments, tunnelTableArguments(inputs));
   append(arguments, requestArguments(vrf, family, query));
   append(arguments, displayArguments(inputs));
   arguments.emplace_back(isisOnlyLegend);
   append(arguments, lastArguments(inputs));
   return arguments;
}

std::vector<std::any> sorter6Arguments(state::Inputs& inputs, state::Inputs::Vrf const& vrf, RouteQuery const& query) {
   OfFamily const family{vrf.ip6,          inputs.routes6(vrf.id),        inputs.attachedRoute6Status,
                         inputs.ip6Status, inputs.routing6HardwareStatus, Lumen::Ip6Prefix()};
   constexpr bool intfFilter = false;
   std::vector<std::any> arguments = tableArguments(inputs, family);
   append(arguments, tunnelTableArguments(inputs));
   append(arguments, requestArguments(vrf, family, query));
   arguments.emplace_back(intfFilter);
   append(arguments, displayArguments(inputs));
   append(arguments, lastArguments(inputs));
   return arguments;
}

}  // namespace kiv
