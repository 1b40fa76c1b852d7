#include "Kiv/KivIpRouteCliHelper.h"

#include "Kiv/common/Trace.h"
#include "Zam/Error.h"
#include "Zam/Toggle.h"

#include <limits>
#include <string>
#include <vector>

namespace Kiv {

using Routing::Route;
using Routing::RouteList;
using Routing::RouteType;

struct IpRouteCliPluginHelper::NewRoute {
   Zam::String const& vrfName;
   std::string_view prefix;
   RouteType routeType;
   std::string_view intfName;
   bool hasLabel;
   U32 label;
   bool hasRouterMac;
   U32 vni;
   std::string_view routerMac;
   bool ribBypass;
   std::string_view vtepAddr;
   bool vtepSipValidation;
   Zam::String const& egressVrf;
   std::string_view hop;
   Zam::String const& nextHopName;
   bool bfdTracked;
   Lumen::IntfId const& vxlanIntf;
   Routing::RouteMetric metric;

   bool isEvpn() const noexcept { return !vtepAddr.empty(); }
};

namespace {

constexpr char const* manageRouteName = "bool IpRouteCliPluginHelper::manageRoute()";

constexpr Lumen::IpAddr firstMulticast(0xe0000000);

Routing::RouteKey keyOf(std::string_view prefix, U16 preference) {
   if (preference > std::numeric_limits<Routing::RoutePreference>::max()) {
      throw Zam::RangeError("Routing::RoutePreference > 255 not allowed");
   }
   Routing::RouteKey const key{
       {}, Lumen::IpGenPrefix::parse(prefix), static_cast<Routing::RoutePreference>(preference)};
   if (key.prefix.isNullPrefix()) {
      throw Zam::ParseError("a destination prefix", prefix);
   }
   return key;
}

bool isMplsPushOnInAllVrfs() {
   static bool const isOn = Zam::getToggleState("Kiv.json", "MplsPushNdVrf");
   return isOn;
}

}  // namespace

bool IpRouteCliPluginHelper::refuse(std::string message) {
   errorMsg_ = std::move(message);
   return false;
}

bool IpRouteCliPluginHelper::isValidPrefix(Zam::String const& prefix, bool ucastOnly) {
   if (prefix.empty()) {
      return refuse("Mask must be contiguous");
   }
   Lumen::Prefix parsed;
   try {
      parsed = Lumen::Prefix::parse(prefix);
   } catch (Zam::RangeError const&) {
      return refuse("Host part of destination prefix must be zero");
   }
   if (parsed.isNullPrefix()) {
      throw Zam::ParseError("a destination prefix", prefix);
   }
   if (ucastOnly && parsed.address() >= firstMulticast) {
      return refuse("Destination prefix must be unicast");
   }
   return true;
}

bool IpRouteCliPluginHelper::manageRoute(Zam::Ptr<RouteList> const& rConfig, Zam::String const& vrfName,
                                         Zam::String const& prefix, U16 preference, RouteType routeType,
                                         Zam::String const& leakToVrf, Zam::String const& intfName, bool label,
                                         U32 labelValue, bool routerMacGiven, U32 vniValue,
                                         Zam::String const& routerMac, bool ribBypass, Zam::String const& vtepAddr,
                                         bool vtepSipValidation, U32 tag, Zam::String const& egressVrf,
                                         Zam::String const& hopStr, Zam::String const& nextHopName, bool bfdTracked,
                                         Zam::String const& nexthopGroupName, Lumen::IntfId const& vxlanIntf,
                                         Routing::RouteMetric metric) {
   Zam::assertThat(rConfig != nullptr, "rConfig", traceSource, manageRouteName);
   NewRoute const added{.vrfName = vrfName,
                        .prefix = prefix,
                        .routeType = routeType,
                        .intfName = intfName,
                        .hasLabel = label,
                        .label = labelValue,
                        .hasRouterMac = routerMacGiven,
                        .vni = vniValue,
                        .routerMac = routerMac,
                        .ribBypass = ribBypass,
                        .vtepAddr = vtepAddr,
                        .vtepSipValidation = vtepSipValidation,
                        .egressVrf = egressVrf,
                        .hop = hopStr,
                        .nextHopName = nextHopName,
                        .bfdTracked = bfdTracked,
                        .vxlanIntf = vxlanIntf,
                        .metric = metric};
   auto const key = keyOf(prefix, preference);
   Route* route = rConfig->route(key);
   if (route == nullptr) {
      route = rConfig->routeIs(key, routeType).get();
   } else if (!mayJoin(route->routeType(), added)) {
      return false;
   }
   route->tagIs(tag);
   if (!leakToVrf.empty()) {
      route->leakToVrfIs(std::string_view(leakToVrf));
   }
   switch (routeType) {
      case RouteType::forward:
         return manageVia(*route, added);
      case RouteType::drop:
         route->dropNextHopNameIs(nextHopName);
         return true;
      case RouteType::routeCacheConnected:
         return true;
      case RouteType::nexthopGroup:
      case RouteType::l2NexthopGroup:
         route->nexthopGroupNameIs(nexthopGroupName);
         route->nexthopGroupMetricIs(metric);
         return true;
   }
   Zam::assertionFailed("routeType == Routing::nexthopGroup() || routeType == Routing::l2NexthopGroup()", traceSource,
                        manageRouteName);
}

// Whether a route that is there takes what is added to it as one more way. L2 nexthop groups are not policed: they may
// join a route with vias, of which the forwarding plane then uses the group.
bool IpRouteCliPluginHelper::mayJoin(RouteType existing, NewRoute const& added) {
   auto const onlyOneIs = [&](RouteType type) { return (existing == type) != (added.routeType == type); };
   if (onlyOneIs(RouteType::nexthopGroup)) {
      return refuse(std::string("Route ").append(added.prefix) +
                    " already exists, cannot ECMP with nexthop group and non-nexthop group routes");
   }
   if (onlyOneIs(RouteType::drop)) {
      return refuse("Cannot ECMP to Null0 interface.");
   }
   if (onlyOneIs(RouteType::routeCacheConnected)) {
      return refuse("Cannot ECMP to Route Cache.");
   }
   return true;
}

bool IpRouteCliPluginHelper::manageVia(Route& route, NewRoute const& added) {
   Zam::assertThat(route.routeType() == added.routeType, "r->routeType() == routeType", traceSource, manageRouteName);
   Routing::Via via;
   via.hop = Lumen::IpGenAddr::parse(added.hop);
   Zam::assertThat(!added.isEvpn() || via.hop.isZero(), "!via.vtepAddr()", traceSource, manageRouteName);
   via.intfId = Lumen::IntfId::parse(added.intfName);
   if (!via.intfId.isValid() && !added.egressVrf.empty() && added.egressVrf != added.vrfName) {
      via.egressVrf = std::string_view(added.egressVrf);
   }
   if (!labelIs(via, added) || !evpnIs(via, added)) {
      return false;
   }
   if (added.isEvpn()) {
      route.ribBypassIs(added.ribBypass);
   }
   if (!hasRoomFor(route, via)) {
      return false;
   }
   if (added.isEvpn()) {
      // There is one via to a VTEP, whether it validates or not.
      Routing::Via opposite = via;
      opposite.vtepSipValidation = !via.vtepSipValidation;
      route.viaDel(opposite);
   }
   route.viaIs(via, added.metric);
   route.viaNextHopNameIs(via, added.nextHopName);
   if (added.bfdTracked) {
      route.bfdTrackedIs(via);
   } else {
      route.bfdTrackedDel(via);
   }
   return true;
}

bool IpRouteCliPluginHelper::labelIs(Routing::Via& via, NewRoute const& added) {
   if (!added.hasLabel) {
      return true;
   }
   if (std::string_view(added.vrfName) != L3::VrfName::defaultVrf && !isMplsPushOnInAllVrfs()) {
      return refuse("Static MPLS routes with push operation is not supported for non-default VRF");
   }
   via.mplsLabel = Lumen::MplsLabel(added.label);
   return true;
}

bool IpRouteCliPluginHelper::evpnIs(Routing::Via& via, NewRoute const& added) {
   if (!added.isEvpn()) {
      return true;
   }
   bool const hasRouterMac = added.hasRouterMac && !added.routerMac.empty();
   if (hasRouterMac) {
      via.routerMac = Lumen::EthAddr::parse(added.routerMac);
      if (via.routerMac.isZero()) {
         return refuse("Only non zero router-mac-address can be configured ");
      }
   }
   if (!hasRouterMac || added.vni == 0) {
      return refuse("Static EVPN routes must specify VNI and router-mac-address ");
   }
   via.vtepAddr = Lumen::IpGenAddr::parse(added.vtepAddr);
   via.vni = Lumen::Vni(added.vni);
   via.localIntf = added.vxlanIntf;
   via.vtepSipValidation = added.vtepSipValidation;
   return true;
}

// A via that is there already is replaced and needs no room. An EVPN via whose validation changes does, although the
// one that it takes the place of goes.
bool IpRouteCliPluginHelper::hasRoomFor(Route const& route, Routing::Via const& via) {
   Zam::assertThat(routingHardwareStatus_.get() != nullptr, "routingHardwareStatus()", traceSource, manageRouteName);
   U32 const limit = routingHardwareStatus_->maxVias();
   if (limit == 0 || route.via().size() != limit || route.via().contains(via)) {
      return true;
   }
   return refuse("A maximum of " + std::to_string(limit) + " routes are allowed with the same prefix and preference");
}

Zam::Ptr<IpRouteCliPluginHelper> ipRouteCliPluginHelperFactory(
    Zam::Ptr<Routing::Hardware::Status const> const& routingHardwareStatus) {
   return Zam::makePtr<IpRouteCliPluginHelper>(routingHardwareStatus);
}

namespace {

// Of a map by vias, those through the interface.
template <class ByVia>
std::vector<Routing::Via> viasThrough(ByVia const& byVia, Lumen::IntfId const& intfId) {
   std::vector<Routing::Via> vias;
   for (auto const& [via, value] : byVia) {
      if (via.intfId == intfId) {
         vias.push_back(via);
      }
   }
   return vias;
}

// Whether anything was removed.
bool removeInterface(Route& route, Lumen::IntfId const& intfId) {
   auto const vias = viasThrough(route.via(), intfId);
   auto const names = viasThrough(route.viaNextHopName(), intfId);
   for (auto const& via : vias) {
      route.viaDel(via);
   }
   for (auto const& via : names) {
      route.viaNextHopNameDel(via);
   }
   return !vias.empty() || !names.empty();
}

}  // namespace

void ClearIntfRoutesAndViasHelper::clearIntfRoutesAndViasHelper(Zam::Ptr<RouteList> const& routeList,
                                                                Zam::String const& intfName) const {
   Zam::assertThat(routeList != nullptr, "routeList", traceSource, "void clearIntfRoutesAndViasHelper()");
   auto const intfId = Lumen::IntfId::parse(intfName);
   if (!intfId.isValid()) {
      return;
   }
   std::vector<Routing::RouteKey> emptied;
   for (auto const& [key, route] : routeList->route()) {
      if (removeInterface(*route, intfId) && route->via().empty() && route->routeType() != RouteType::drop) {
         emptied.push_back(key);
      }
   }
   for (auto const& key : emptied) {
      routeList->routeDel(key);
   }
}

}  // namespace Kiv
