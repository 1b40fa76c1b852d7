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
   registry.value<RouteSortKey>();
   registry.value<RoutingConsts>().told({{"defaultStaticRoutePreference", "Of a route that names none."},
                                         {"defaultStaticRouteTag", "Of a route that names none."},
                                         {"defaultStaticRouteName", "Of a next hop that has none."},
                                         {"defaultStaticRouteMetric", "Of a via that names none."}});
   registry.value<NexthopInfo>().told({{"nexthopCmd", "What follows the prefix, of a route of one line."},
                                       {"sortedVia", "What follows the prefix, by via."}});
   registry.value<StaticRoutesCliSaver>()
       .told({{"sortedRoute", "The lines by prefix and preference, filled by save()."}})
       .operation("save", &StaticRoutesCliSaver::save,
                  {"The lines that make the routes of a list.", {"routeList", "saveAll", "routeCmd", "routingConsts"}});
   registry.value<StaticRoutesRibCommon>()
       .told({{"sortedRoute", "The routes of all inputs, filled by dump()."},
              {"allIntfConfig", "The descriptions of interfaces."},
              {"dynamic", "Whether routes added at run time are shown, or the configured ones."},
              {"fd", "Where to print."},
              {"fmt", "1 for text, 2 for the model."},
              {"tag", "Of the routes to show, 0 for all."},
              {"routeInputConf", "The inputs whose routes are shown."}})
       .operation("dump", &StaticRoutesRibCommon::dump, {"Prints; the errno that ended it, or 0.", {"routingConsts"}})
       .operation("legend", &StaticRoutesRibCommon::legend, "The line that explains the codes.");
   registry.value<ClearIntfRoutesAndViasHelper>().operation(
       "clearIntfRoutesAndViasHelper", &ClearIntfRoutesAndViasHelper::clearIntfRoutesAndViasHelper,
       {"Takes away what leads out of an interface.", {"routeList", "intfName"}});
   registry.entity<IpRouteCliPluginHelper>("Kiv::IpRouteCliPluginHelper")
       .constructor(IpRouteCliPluginHelperIs, {"", {"routingHardwareStatus"}})
       .attribute("routingHardwareStatus", &IpRouteCliPluginHelper::routingHardwareStatus, "The limit of vias.")
       .attribute("errorMsg", &IpRouteCliPluginHelper::errorMsg, "Why the last refusal.")
       .operation("isValidPrefix", &IpRouteCliPluginHelper::isValidPrefix,
                  {"Whether a route can have that destination.", {"prefix", "ucastOnly"}})
       .operation(
           "manageRoute", &IpRouteCliPluginHelper::manageRoute,
           {"Adds a route or a via; false when it is refused.", {"rConfig",      "vrfName",    "prefix",
                                                                 "preference",   "routeType",  "leakToVrf",
                                                                 "intfName",     "label",      "labelValue",
                                                                 "hasRouterMac", "vniValue",   "routerMac",
                                                                 "ribBypass",    "vtepAddr",   "vtepSipValidation",
                                                                 "tag",          "egressVrf",  "hopStr",
                                                                 "nextHopName",  "bfdTracked", "nexthopGroupName",
                                                                 "vxlanIntf",    "metric"}});
}

void registerAddressCheckers() {
   auto& registry = Zam::TypeRegistry::instance();
   Zam::Told const told4("A question.",
                         {"ipConfig", "intfName", "mgmtPrefix", "primaryMatch", "secondaryMatch", "addrWithMask"});
   Zam::Told const told6("A question.", {"ipConfig", "intfName", "mgmtPrefix", "addrWithMask"});
   Zam::Told const checkTold("Whether an address may be assigned.", {"params"});
   registry.enumeration<AddrMatchType>("Kiv::AddrMatchType");
   registry.value<AddressQueryResult>().told(
       {{"acceptable", "Whether the address may be assigned."}, {"msg", "Why not."}});
   registry.value<AddressAssignmentChecker>().operation("check", &AddressAssignmentChecker::check, checkTold);
   registry.value<Address6AssignmentChecker>().operation("check", &Address6AssignmentChecker::check, checkTold);
   registry.entity<AddressQueryParams>("Kiv::AddressQueryParams")
       .constructor(&addressQueryParamsFactory, told4)
       .attribute("ipConfig", &AddressQueryParams::ipConfig, "The addresses that there are.")
       .attribute("intfName", &AddressQueryParams::intfName, "The interface that is to have the address.")
       .attribute("mgmtPrefix", &AddressQueryParams::mgmtPrefix, "How names of management interfaces begin.")
       .attribute("primaryMatch", &AddressQueryParams::primaryMatch, "For the interface's own primary address.")
       .attribute("secondaryMatch", &AddressQueryParams::secondaryMatch, "For its other addresses.")
       .attribute("addrWithMask", &AddressQueryParams::addrWithMask, "The address.")
       .operation("AddressQueryParamsIs", &AddressQueryParams::AddressQueryParamsIs, told4);
   registry.entity<Address6QueryParams>("Kiv::Address6QueryParams")
       .constructor(&address6QueryParamsFactory, told6)
       .attribute("ipConfig", &Address6QueryParams::ipConfig, "The addresses that there are.")
       .attribute("intfName", &Address6QueryParams::intfName, "The interface that is to have the address.")
       .attribute("mgmtPrefix", &Address6QueryParams::mgmtPrefix, "How names of management interfaces begin.")
       .attribute("addrWithMask", &Address6QueryParams::addrWithMask, "The address.")
       .operation("Address6QueryParamsIs", &Address6QueryParams::Address6QueryParamsIs, told6);
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
       .constructor(&rdAssignmentChecker,
                    {"Checks at once.", {"rdAutoInputDir", "rdConfigInputDir", "vrfName", "routeDistinguisher"}})
       .told({{"rdAutoInputDir", "What was assigned automatically."},
              {"rdConfigInputDir", "What is configured; checked first."},
              {"vrfName", "The VRF that is to have the route distinguisher."},
              {"routeDistinguisher", "The route distinguisher."},
              {"acceptable", "Whether no other VRF uses it."},
              {"errorMessage", "Who does."}})
       .operation("handleInitialized", &RdAssignmentChecker::handleInitialized, "Checks both directories.")
       .operation("handleInputDir", &RdAssignmentChecker::handleInputDir, {"Checks a directory.", {"dir"}});
   registry.entity<ProtocolCodeWordHelper>("Kiv::ProtocolCodeWordHelper")
       .constructor(&protocolCodeWordHelperFactory)
       .operation("protocolCodeWordToCode", &ProtocolCodeWordHelper::protocolCodeWordToCode,
                  {"The code of the first route type whose model word begins the word.", {"word"}});
}

}  // namespace Kiv
