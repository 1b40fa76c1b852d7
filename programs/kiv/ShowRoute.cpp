#include "programs/kiv/ShowRoute.h"

#include "programs/kiv/Families.h"
#include "programs/kiv/RouteClauses.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <tuple>
#include <unordered_map>

namespace kiv {
namespace {

U32 requestedGroup(state::Inputs const& inputs, std::string const& name) {
   U32 const id = inputs.nexthopGroupEntryStatus->nexthopGroupNameToId(Zam::String(name));
   return id != 0 ? id : throw Refusal(name, "no such nexthop group");
}

// Routes with a via that is all that was asked for. Filters that take the other vias out of a FEC take them from every
// route that resolves through it, too.
class ViaFilter final : public Kiv::RouteFilterBase {
 public:
   ViaFilter(std::optional<Lumen::IpGenAddr> const& nexthop, std::optional<Lumen::IntfId> const& interface)
       : nexthop_(nexthop),
         interface_(interface) {}
   std::string_view fwkType() const noexcept override { return "kiv::ViaFilter"; }
   bool filter(Zam::Ptr<Kiv::CachedFec> const& fec, bool /* discardNonMatchingVia */) const override {
      return !fec || std::ranges::none_of(fec->via(), [this](auto const& via) { return matches(via.key); });
   }
   void prune(Kiv::CachedFec& fec) const {
      for (auto const& [via, value] : fec.via()) {
         matches(via) || fec.viaDel(via);
      }
   }

 private:
   bool matches(Kiv::CachedVia const& via) const {
      return (!nexthop_ || via.hop == *nexthop_) && (!interface_ || via.intfId == *interface_);
   }

   std::optional<Lumen::IpGenAddr> nexthop_;
   std::optional<Lumen::IntfId> interface_;
};

// Null when all vias of a route are shown.
template <class Prefix>
Zam::Ptr<ViaFilter const> requestedVias(state::Inputs const& inputs, RouteArguments<Prefix> const& asked) {
   if (!asked.matchingViasOnly) {
      return {};
   }
   auto const interface = asked.interface ? requestedInterface(inputs, *asked.interface) : nullptr;
   return Zam::makePtr<ViaFilter>(asked.nexthop, interface ? std::optional(interface->intfId()) : std::nullopt);
}

// Null when the command has none.
template <class Prefix>
Zam::Ptr<Kiv::RouteFilterColl> requestedFilters(state::Inputs const& inputs, RouteArguments<Prefix> const& asked,
                                                Zam::Ptr<ViaFilter const> const& vias) {
   if (!asked.nexthop && !asked.nexthopGroup && !asked.interface) {
      return {};
   }
   constexpr bool discardNonMatchingVia = false;
   auto filters = Kiv::routeFilterCollFactory(discardNonMatchingVia);
   if (vias) {
      filters->filterCollIs(vias);
      return filters;
   }
   if (asked.nexthop) {
      filters->filterCollIs(Kiv::routeFilterIpFactory(*asked.nexthop));
   }
   if (asked.interface) {
      filters->filterCollIs(Kiv::routeFilterIntfFactory(requestedInterface(inputs, *asked.interface)));
   }
   if (asked.nexthopGroup) {
      bool const any = *asked.nexthopGroup == anyGroup;
      U32 const id = any ? 0 : requestedGroup(inputs, *asked.nexthopGroup);
      filters->filterCollIs(Kiv::routeFilterNextHopGroupFactory(id, any));
   }
   return filters;
}

// Takes the routes that the filters hide out of the sorter.
template <class Sorter>
void hideFiltered(Sorter& sorter, Kiv::RouteFilterColl const& filters) {
   auto const routes = sorter.sortedRoute();
   for (auto const& [prefix, route] : routes) {
      endWhenInterrupted();
      if (filters.filter(sorter.fec(route.fecId))) {
         sorter.sortedRouteDel(prefix);
      }
   }
}

// Leaves the routes those of their vias that match, in FECs of their own.
template <class Sorter>
void showOnly(Sorter& sorter, ViaFilter const& vias) {
   std::unordered_map<Vault::Fib::FecId, Vault::Fib::FecId> pruned;
   auto const routes = sorter.sortedRoute();
   for (auto [prefix, route] : routes) {
      endWhenInterrupted();
      auto const [at, isNew] = pruned.try_emplace(route.fecId);
      if (isNew) {
         auto const copy = sorter.fecCopy(route.fecId);
         vias.prune(*copy);
         at->second = copy->fecId();
      }
      route.fecId = at->second;
      sorter.sortedRouteIs(prefix, route);
   }
}

template <class SorterInputs>
void tunnelTablesAre(SorterInputs& to, state::Inputs const& inputs) {
   std::tie(to.evpnVxlanTunnelTable, to.isisSrTunnelTable, to.staticTunnelTable, to.ldpTunnelTable, to.bgpLuTunnelTable,
            to.nexthopGroupTunnelTable, to.rsvpLerTunnelTable, to.isisFlexAlgoTunnelTable) = inputs.tunnelTables;
   to.tunnelFib = inputs.tunnelFib;
   to.protocolTunnelNameStatus = inputs.protocolTunnelNameStatus;
   to.cbfFecOverrideMap = inputs.cbfFecOverrideMap;
   to.policyStatus = inputs.policyStatus;
   to.policyForwardingStatus = inputs.policyForwardingStatus;
   to.flexAlgoConfig = inputs.flexAlgoConfig;
}

// What is not of one family or VRF.
template <class SorterInputs>
void tablesAre(SorterInputs& to, state::Inputs const& inputs) {
   to.forwardingStatus = inputs.forwardingStatus;
   to.forwarding6Status = inputs.forwarding6Status;
   to.forwardingGenStatus = inputs.forwardingGenStatus;
   to.vrfIdMap = inputs.vrfIdMap;
   to.allIntfConfig = inputs.allIntfConfig;
   to.nexthopGroupEntryStatus = inputs.nexthopGroupEntryStatus;
   to.kernelUnprogrammedRoute = inputs.kernelUnprogrammedRoute;
   to.unprogrammedRouteStatus = inputs.unprogrammedRouteStatus;
   to.l3Config = inputs.l3Config;
   to.routeCacheConfig = inputs.routeCacheConfig;
   to.routeCacheEvpnViaConfig = inputs.routeCacheEvpnViaConfig;
   to.secondRouteConfig = inputs.secondRouteConfig;
   tunnelTablesAre(to, inputs);
}

// A sorter looks for the default route in them. It is configured, too, when it was added while the box runs.
template <class Family>
Zam::Ptr<Routing::RouteList const> configuredRoutes(state::Inputs::Vrf const& vrf) {
   auto const& lists = Family::of(vrf);
   Lumen::IpGenPrefix const prefix(Family::Prefix::parse(Family::everything));
   auto const isDefault = [&](auto const& entry) { return entry.key.prefix == prefix; };
   bool const isAdded = lists.routeListDynamic && std::ranges::any_of(lists.routeListDynamic->route(), isDefault);
   return isAdded ? lists.routeListDynamic : lists.routeList;
}

template <class Family>
void vrfIs(typename Family::Sorter::Inputs& to, state::Inputs& inputs, state::Inputs::Vrf const& vrf) {
   to.routingConfig = Family::of(vrf).routingConfig;
   to.routeList = configuredRoutes<Family>(vrf);
   to.routingStatus = Family::routes(inputs, vrf.id);
   to.vrfName = vrf.name;
   to.vrfId = vrf.id;
}

template <class Family>
typename Family::Sorter::Inputs requestedRoutes(state::Inputs const& inputs,
                                                RouteArguments<typename Family::Prefix> const& asked) {
   auto const requested = asked.prefix.value_or(RequestedPrefix<typename Family::Prefix>{});
   typename Family::Sorter::Inputs to;
   to.prefix = requested.prefix;
   to.prefixHasMask = requested.hasMask;
   to.intfStatus = asked.interface ? requestedInterface(inputs, *asked.interface) : nullptr;
   to.familySwitch = Family::isInterfaceSwitch && asked.interface;
   to.protocol = Zam::String(asked.protocol);
   to.showHidden = asked.all;
   to.longerPrefixes = asked.longerPrefixes;
   to.hostRoutes = asked.host;
   to.nexthopGroupDisplay = true;
   to.showLocalInterface = true;
   to.attachedRouteStatus = Family::attached(inputs);
   to.ipStatus = Family::status(inputs);
   to.routingHardwareStatus = Family::hardware(inputs);
   tablesAre(to, inputs);
   return to;
}

// Selects the routes of one VRF. A sorter that is asked for longer prefixes looks at its filters before it has a
// route's FEC, so it would hide nearly every route; once it is done, it has all FECs.
template <class Family>
auto selected(typename Family::Sorter::Inputs const& inputs, Zam::Ptr<Kiv::RouteFilterColl> const& filters,
              Zam::Ptr<ViaFilter const> const& vias) {
   auto const all = filters ? filters->filterColl() : Kiv::RouteFilterColl::Filters();
   if (filters && inputs.longerPrefixes) {
      filters->filterCollDelAll();
   }
   auto sorter = Family::sorter(inputs);
   sorter->handleInitialized();
   if (filters && inputs.longerPrefixes) {
      std::ranges::for_each(all, [&](auto const& filter) { filters->filterCollIs(filter); });
      hideFiltered(*sorter, *filters);
   }
   if (vias) {
      showOnly(*sorter, *vias);
   }
   return sorter;
}

// The output goes on when this is ok. `leftOut` becomes true when it does not show all vias.
template <class Sorter>
ExitStatus print(Session const& session, Sorter& sorter, bool& leftOut) {
   constexpr bool vrfHeader = true;
   bool const complete = sorter.printRoutes(static_cast<U32>(session.output()), session.format(), vrfHeader);
   S32 const error = sorter.outputError();
   leftOut = leftOut || error == EOVERFLOW;
   return session.ended(complete || error == EOVERFLOW ? 0 : error != 0 ? error : EINTR);
}

// The longest match of an address that nothing hides is what the kernel itself looks up.
template <class Family>
kernel::Need neededBy(RouteArguments<typename Family::Prefix> const& asked) {
   bool const isLookup = asked.prefix && !asked.prefix->hasMask && !asked.longerPrefixes && asked.protocol.empty() &&
                         !asked.nexthop && !asked.interface && !asked.nexthopGroup && !asked.all &&
                         asked.vrf == L3::VrfName::defaultVrf;
   kernel::Need need{.family = Family::family};
   if (isLookup) {
      need.address = Lumen::IpGenAddr(asked.prefix->prefix.address());
   }
   return need;
}

template <class Family>
ExitStatus showRoute(Session& session, RouteArguments<typename Family::Prefix> const& asked) {
   state::Inputs inputs = session.inputs(neededBy<Family>(asked));
   auto const vrfs = requestedVrfs(inputs, asked.vrf);
   auto of = requestedRoutes<Family>(inputs, asked);
   auto const vias = requestedVias(inputs, asked);
   auto const filters = requestedFilters(inputs, asked, vias);
   of.routeFilterColl = filters;
   std::ranges::for_each(vrfs, [&](auto const& vrf) { Family::routes(inputs, vrf.id); });  // what fails, fails before
   bool leftOut = false;
   ExitStatus status = printPerVrf(session, vrfs, [&](state::Inputs::Vrf const& vrf) {
      vrfIs<Family>(of, inputs, vrf);
      return [&, sorter = selected<Family>(of, filters, vias)] { return print(session, *sorter, leftOut); };
   });
   if (leftOut && status == ExitStatus::ok) {
      session.report("not all vias are shown; the routes that have more say so");
      status = ExitStatus::internal;
   }
   return status;
}

constexpr auto routeTable = std::to_array<Command>({
    display<showRoute<Ip4>>("show ip route", "the IPv4 route table", routeClauses<Lumen::Prefix>),
    display<showRoute<Ip6>>("show ipv6 route", "the IPv6 route table", routeClauses<Lumen::Ip6Prefix>),
});

}  // namespace

template <class Family>
Zam::Ptr<typename Family::Sorter> selectedRoutes(state::Inputs& inputs,
                                                 RouteArguments<typename Family::Prefix> const& asked) {
   auto of = requestedRoutes<Family>(inputs, asked);
   auto const vias = requestedVias(inputs, asked);
   auto const filters = requestedFilters(inputs, asked, vias);
   of.routeFilterColl = filters;
   vrfIs<Family>(of, inputs, requestedVrf(inputs, asked.vrf));
   return selected<Family>(of, filters, vias);
}

template Zam::Ptr<Kiv::RouteSorter> selectedRoutes<Ip4>(state::Inputs& inputs,
                                                        RouteArguments<Lumen::Prefix> const& asked);
template Zam::Ptr<Kiv::Route6Sorter> selectedRoutes<Ip6>(state::Inputs& inputs,
                                                         RouteArguments<Lumen::Ip6Prefix> const& asked);

std::span<Command const> routeCommands() {
   return routeTable;
}

}  // namespace kiv
