#include "Kiv/config/Types.h"

#include "Kiv/CliRdAssignmentChecker.h"
#include "Kiv/KivIpRouteCliHelper.h"
#include "Kiv/config/AddressAssignmentChecker.h"
#include "Kiv/config/ProtocolCodeWordHelper.h"
#include "Kiv/config/StaticRoutesCliSaver.h"
#include "Kiv/config/StaticRoutesRibCommon.h"
#include "Zam/TypeRegistry.h"

namespace Kiv {

namespace {

void registerStaticRoutes() {
   auto& registry = Zam::TypeRegistry::instance();
   registry.enumeration<Routing::RouteType>("Routing::RouteType");
   registry.value<RouteSortKey>();
   registry.value<RoutingConsts>();
   registry.value<NexthopInfo>();
   registry.value<StaticRoutesCliSaver>().operation("save", &StaticRoutesCliSaver::save);
   registry.value<StaticRoutesRibCommon>()
       .operation("dump", &StaticRoutesRibCommon::dump)
       .operation("legend", &StaticRoutesRibCommon::legend);
   registry.value<ClearIntfRoutesAndViasHelper>().operation(
       "clearIntfRoutesAndViasHelper", &ClearIntfRoutesAndViasHelper::clearIntfRoutesAndViasHelper);
   registry.entity<IpRouteCliPluginHelper>("Kiv::IpRouteCliPluginHelper")
       .constructor(IpRouteCliPluginHelperIs)
       .attribute("routingHardwareStatus", &IpRouteCliPluginHelper::routingHardwareStatus)
       .attribute("errorMsg", &IpRouteCliPluginHelper::errorMsg)
       .operation("isValidPrefix", &IpRouteCliPluginHelper::isValidPrefix)
       .operation("manageRoute", &IpRouteCliPluginHelper::manageRoute);
}

void registerAddressCheckers() {
   auto& registry = Zam::TypeRegistry::instance();
   registry.enumeration<AddrMatchType>("Kiv::AddrMatchType");
   registry.value<AddressQueryResult>();
   registry.value<AddressAssignmentChecker>().operation("check", &AddressAssignmentChecker::check);
   registry.value<Address6AssignmentChecker>().operation("check", &Address6AssignmentChecker::check);
   registry.entity<AddressQueryParams>("Kiv::AddressQueryParams")
       .constructor(&addressQueryParamsFactory)
       .attribute("ipConfig", &AddressQueryParams::ipConfig)
       .attribute("intfName", &AddressQueryParams::intfName)
       .attribute("mgmtPrefix", &AddressQueryParams::mgmtPrefix)
       .attribute("primaryMatch", &AddressQueryParams::primaryMatch)
       .attribute("secondaryMatch", &AddressQueryParams::secondaryMatch)
       .attribute("addrWithMask", &AddressQueryParams::addrWithMask)
       .operation("AddressQueryParamsIs", &AddressQueryParams::AddressQueryParamsIs);
   registry.entity<Address6QueryParams>("Kiv::Address6QueryParams")
       .constructor(&address6QueryParamsFactory)
       .attribute("ipConfig", &Address6QueryParams::ipConfig)
       .attribute("intfName", &Address6QueryParams::intfName)
       .attribute("mgmtPrefix", &Address6QueryParams::mgmtPrefix)
       .attribute("addrWithMask", &Address6QueryParams::addrWithMask)
       .operation("Address6QueryParamsIs", &Address6QueryParams::Address6QueryParamsIs);
}

RdAssignmentChecker rdAssignmentChecker(Zam::Ptr<RdAssignmentChecker::InputDir const> const& rdAutoInputDir,
                                        Zam::Ptr<RdAssignmentChecker::InputDir const> const& rdConfigInputDir,
                                        Zam::String const& vrfName,
                                        Lumen::RouteDistinguisher const& routeDistinguisher) {
   return {rdAutoInputDir, rdConfigInputDir, vrfName, routeDistinguisher};
}

}  // namespace

void registerConfigTypes() {
   registerStaticRoutes();
   registerAddressCheckers();
   auto& registry = Zam::TypeRegistry::instance();
   registry.value<RdAssignmentChecker>()
       .constructor(&rdAssignmentChecker)
       .operation("handleInitialized", &RdAssignmentChecker::handleInitialized)
       .operation("handleInputDir", &RdAssignmentChecker::handleInputDir);
   registry.entity<ProtocolCodeWordHelper>("Kiv::ProtocolCodeWordHelper")
       .constructor(&protocolCodeWordHelperFactory)
       .operation("protocolCodeWordToCode", &ProtocolCodeWordHelper::protocolCodeWordToCode);
}

}  // namespace Kiv
