#include "programs/kiv/SorterArguments.h"

namespace kiv {
namespace {

// The members that only one family has, or that it has of its own.
struct OfFamily {
   state::Inputs::OfVrf vrf;
   std::any routes;
   std::any attachedRoutes;
   std::any ipStatus;
   std::any hardwareStatus;
};

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

template <class Prefix>
std::vector<std::any> requestArguments(state::Inputs::Vrf const& vrf, RouteQuery<Prefix> const& query) {
   constexpr S32 reserved31 = 0;
   constexpr double noTimings = 0;
   return {query.requested.prefix,
           query.intfStatus,
           Zam::String(query.protocol),
           query.showHidden,
           query.longerPrefixes,
           vrf.name,
           vrf.id,
           query.hostRoutes,
           reserved31,
           noTimings,
           query.requested.hasMask};
}

std::vector<std::any> displayArguments(state::Inputs const& inputs, std::any const& filters) {
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
           filters.has_value() ? filters : nullptr,
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

std::vector<std::any> sorterArguments(state::Inputs& inputs, state::Inputs::Vrf const& vrf,
                                      RouteQuery<Lumen::Prefix> const& query) {
   OfFamily const family{vrf.ip, inputs.routes(vrf.id), inputs.attachedRouteStatus, inputs.ipStatus,
                         inputs.routingHardwareStatus};
   constexpr bool isisOnlyLegend = false;
   std::vector<std::any> arguments = tableArguments(inputs, family);
   append(arguments, tunnelTableArguments(inputs));
   append(arguments, requestArguments(vrf, query));
   append(arguments, displayArguments(inputs, query.filters));
   arguments.emplace_back(isisOnlyLegend);
   append(arguments, lastArguments(inputs));
   return arguments;
}

std::vector<std::any> sorterArguments(state::Inputs& inputs, state::Inputs::Vrf const& vrf,
                                      RouteQuery<Lumen::Ip6Prefix> const& query) {
   OfFamily const family{vrf.ip6, inputs.routes6(vrf.id), inputs.attachedRoute6Status, inputs.ip6Status,
                         inputs.routing6HardwareStatus};
   bool const intfFilter = query.intfStatus != nullptr;
   std::vector<std::any> arguments = tableArguments(inputs, family);
   append(arguments, tunnelTableArguments(inputs));
   append(arguments, requestArguments(vrf, query));
   arguments.emplace_back(intfFilter);
   append(arguments, displayArguments(inputs, query.filters));
   append(arguments, lastArguments(inputs));
   return arguments;
}

}  // namespace kiv
