#pragma once

#include "FlexAlgo/Config.h"
#include "Interface/AllIntfConfigDir.h"
#include "Interface/IntfStatus.h"
#include "Kiv/common/Family.h"
#include "Kiv/selection/RouteFilter.h"
#include "L3/Config.h"
#include "L3/VrfName.h"
#include "NexthopGroup/EntryStatus.h"
#include "Routing/AttachedRouteStatus.h"
#include "Routing/ConfigGen.h"
#include "Routing/Rib/RouteCache/Evpn/ViaConfig.h"
#include "Routing/Rib/RouteConfig.h"
#include "Routing/RouteList.h"
#include "SrTePolicy/CbfFecOverrideMap.h"
#include "SrTePolicy/PolicyStatus.h"
#include "Tunnel/TunnelFib/TunnelFib.h"
#include "Tunnel/TunnelTable/ProtocolTunnelNameStatus.h"
#include "Tunnel/TunnelTable/TunnelTables.h"
#include "Vault/ForwardingStatus.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/UnprogrammedRouteStatus.h"
#include "Vrf/VrfIdMap/Status.h"
#include "Zam/Ptr.h"
#include "Zam/Value.h"

#include <type_traits>
#include <utility>

namespace Kiv {

// What a route sorter reads: the tables and the user's request. The members are described in the order in which the
// scripting layer hands them over, and under the names by which it reads them back. Any table may be null; the sorter
// then does without. Names that begin with "reserved" keep the place of an input that no operation reads yet.
template <class Family>
struct RouteSorterInputs : Zam::ValueType {
   template <class T>
   using Table = Zam::Ptr<T const>;

   Table<Routing::ConfigGen> routingConfig;
   Table<Routing::RouteList> routeList;
   Table<typename Family::RouteStatus> routingStatus;
   Table<Vault::Fib::ForwardingStatus> forwardingStatus;
   Table<Vault::Fib6::ForwardingStatus> forwarding6Status;
   Table<Vault::FibGen::ForwardingStatus> forwardingGenStatus;  // when present, it holds every FEC
   Table<Tunnel::TunnelFib::TunnelFib> tunnelFib;
   Table<Routing::AttachedRouteStatus> attachedRouteStatus;
   Table<Vrf::VrfIdMap::Status> vrfIdMap;
   Table<Interface::AllIntfConfigDir> allIntfConfig;
   Table<typename Family::IpStatus> ipStatus;
   Table<typename Family::HardwareStatus> routingHardwareStatus;
   Table<NexthopGroup::EntryStatus> nexthopGroupEntryStatus;
   Table<Vault::KernelUnprogrammedRoute::UnprogrammedRoute> kernelUnprogrammedRoute;
   Table<Tunnel::TunnelTable::EvpnVxlanTunnelTable> evpnVxlanTunnelTable;
   Table<Tunnel::TunnelTable::IsisSrTunnelTable> isisSrTunnelTable;
   Table<Tunnel::TunnelTable::StaticTunnelTable> staticTunnelTable;
   Table<Tunnel::TunnelTable::LdpTunnelTable> ldpTunnelTable;
   Table<Tunnel::TunnelTable::BgpLuTunnelTable> bgpLuTunnelTable;
   Table<Tunnel::TunnelTable::NexthopGroupTunnelTable> nexthopGroupTunnelTable;
   Table<Tunnel::TunnelTable::RsvpLerTunnelTable> rsvpLerTunnelTable;
   Table<Tunnel::TunnelTable::IsisFlexAlgoTunnelTable> isisFlexAlgoTunnelTable;
   typename Family::Prefix prefix;           // the null prefix asks for all routes
   Table<Interface::IntfStatus> intfStatus;  // of the interface named in the request, null when none was
   Zam::String protocol;                     // protocol code to show, empty for all
   bool showHidden = false;                  // also martian, link-local and unresolved routes
   bool longerPrefixes = false;              // everything inside the prefix instead of its longest match
   L3::VrfName vrfName;
   Vrf::VrfIdMap::VrfId vrfId = 0;
   bool hostRoutes = false;  // the host route table instead of the route table
   S32 reserved31 = 0;
   double startTime = 0;        // seconds on the platform clock; 0 prints no timings
   bool prefixHasMask = false;  // the request was a prefix, not a bare address
   bool familySwitch = false;   // Family::switchName: IPv4 hands it over 46th, IPv6 34th
   Table<SrTePolicy::CbfFecOverrideMap> cbfFecOverrideMap;
   Table<SrTePolicy::PolicyStatus> policyStatus;
   Table<Vault::Fib::ForwardingStatus> policyForwardingStatus;
   bool nexthopGroupDisplay = false;  // a nexthop-group route prints its group instead of its vias
   bool showLocalInterface = false;   // VXLAN vias name their local interface
   bool reserved39 = false;
   Table<Vault::Fib::UnprogrammedRouteStatus> unprogrammedRouteStatus;
   Zam::Ptr<RouteFilterColl const> routeFilterColl;
   Table<L3::Config> l3Config;
   Table<Routing::Rib::RouteConfig> routeCacheConfig;
   Table<Routing::Rib::RouteCache::Evpn::ViaConfig> routeCacheEvpnViaConfig;
   Table<Routing::Rib::RouteConfig> secondRouteConfig;
   Table<Tunnel::TunnelTable::ProtocolTunnelNameStatus> protocolTunnelNameStatus;
   Table<FlexAlgo::Config> flexAlgoConfig;
   bool reserved49 = false;

   // From the inputs in their order.
   template <class... Arguments>
   static RouteSorterInputs fromArguments(Arguments&&... arguments) {
      constexpr auto const& description = Zam::descriptionOf<RouteSorterInputs>;
      static_assert(sizeof...(Arguments) == description.size);
      RouteSorterInputs inputs;
      description.with([&](auto const&... at) { ((inputs.*at.member = std::forward<Arguments>(arguments)), ...); });
      return inputs;
   }

   static constexpr auto zamDescription() {
      using I = RouteSorterInputs;
      constexpr auto all = [](auto const&... attributes) {
         return Zam::describe<I>(Family::inputsName, attributes...);
      };
      return Zam::withAttributes(
          all,
          Zam::attributes(
              Zam::attribute("routingConfig", &I::routingConfig), Zam::attribute("routeList", &I::routeList),
              Zam::attribute("routingStatus", &I::routingStatus),
              Zam::attribute("forwardingStatus", &I::forwardingStatus),
              Zam::attribute("forwarding6Status", &I::forwarding6Status),
              Zam::attribute("forwardingGenStatus", &I::forwardingGenStatus),
              Zam::attribute("tunnelFib", &I::tunnelFib),
              Zam::attribute("attachedRouteStatus", &I::attachedRouteStatus), Zam::attribute("vrfIdMap", &I::vrfIdMap),
              Zam::attribute("allIntfConfig", &I::allIntfConfig), Zam::attribute("ipStatus", &I::ipStatus),
              Zam::attribute("routingHardwareStatus", &I::routingHardwareStatus),
              Zam::attribute("nexthopGroupEntryStatus", &I::nexthopGroupEntryStatus),
              Zam::attribute("kernelUnprogrammedRoute", &I::kernelUnprogrammedRoute),
              Zam::attribute("evpnVxlanTunnelTable", &I::evpnVxlanTunnelTable),
              Zam::attribute("isisSrTunnelTable", &I::isisSrTunnelTable),
              Zam::attribute("staticTunnelTable", &I::staticTunnelTable),
              Zam::attribute("ldpTunnelTable", &I::ldpTunnelTable),
              Zam::attribute("bgpLuTunnelTable", &I::bgpLuTunnelTable),
              Zam::attribute("nexthopGroupTunnelTable", &I::nexthopGroupTunnelTable),
              Zam::attribute("rsvpLerTunnelTable", &I::rsvpLerTunnelTable),
              Zam::attribute("isisFlexAlgoTunnelTable", &I::isisFlexAlgoTunnelTable),
              Zam::attribute("prefix", &I::prefix), Zam::attribute("intfStatus", &I::intfStatus),
              Zam::attribute("protocol", &I::protocol), Zam::attribute("showHidden", &I::showHidden),
              Zam::attribute("longerPrefixes", &I::longerPrefixes), Zam::attribute("vrfName", &I::vrfName),
              Zam::attribute("vrfId", &I::vrfId), Zam::attribute("hostRoutes", &I::hostRoutes),
              Zam::attribute("reserved31", &I::reserved31), Zam::attribute("startTime", &I::startTime),
              Zam::attribute("prefixHasMask", &I::prefixHasMask)),
          familySwitchHere<!Family::switchReducesLegend>(),
          Zam::attributes(Zam::attribute("cbfFecOverrideMap", &I::cbfFecOverrideMap),
                          Zam::attribute("policyStatus", &I::policyStatus),
                          Zam::attribute("policyForwardingStatus", &I::policyForwardingStatus),
                          Zam::attribute("nexthopGroupDisplay", &I::nexthopGroupDisplay),
                          Zam::attribute("showLocalInterface", &I::showLocalInterface),
                          Zam::attribute("reserved39", &I::reserved39),
                          Zam::attribute("unprogrammedRouteStatus", &I::unprogrammedRouteStatus),
                          Zam::attribute("routeFilterColl", &I::routeFilterColl),
                          Zam::attribute("l3Config", &I::l3Config),
                          Zam::attribute("routeCacheConfig", &I::routeCacheConfig),
                          Zam::attribute("routeCacheEvpnViaConfig", &I::routeCacheEvpnViaConfig),
                          Zam::attribute("secondRouteConfig", &I::secondRouteConfig)),
          familySwitchHere<Family::switchReducesLegend>(),
          Zam::attributes(Zam::attribute("protocolTunnelNameStatus", &I::protocolTunnelNameStatus),
                          Zam::attribute("flexAlgoConfig", &I::flexAlgoConfig),
                          Zam::attribute("reserved49", &I::reserved49)));
   }

 private:
   template <bool Here>
   static constexpr auto familySwitchHere() {
      if constexpr (Here) {
         return Zam::attributes(Zam::attribute(Family::switchName, &RouteSorterInputs::familySwitch));
      } else {
         return Zam::attributes();
      }
   }
};

}  // namespace Kiv
