#pragma once

#include "Lumen/IntfId.h"
#include "Routing/Hardware/Status.h"
#include "Routing/RouteList.h"
#include "Zam/Export.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"
#include "Zam/Value.h"

// What the commands of static route configuration do.
namespace Kiv {

// Adds static routes and vias to a route configuration, as far as the forwarding plane can hold them. What a user must
// be told is no exception: the operation returns false and errorMsg() has the message. Text that the command line's
// grammar does not let through, and values beyond their type, raise the runtime's errors.
class KIV_EXPORT IpRouteCliPluginHelper final : public Zam::PtrInterface {
 public:
   explicit IpRouteCliPluginHelper(Zam::Ptr<Routing::Hardware::Status const> routingHardwareStatus)
       : routingHardwareStatus_(std::move(routingHardwareStatus)) {}
   std::string_view fwkType() const noexcept override { return "Kiv::IpRouteCliPluginHelper"; }

   // Has the limit on the vias of one route.
   Zam::Ptr<Routing::Hardware::Status const> const& routingHardwareStatus() const noexcept {
      return routingHardwareStatus_;
   }
   // The message of the last refusal; what succeeds does not clear it.
   Zam::String const& errorMsg() const noexcept { return errorMsg_; }

   // Whether the text is an IPv4 destination. An empty one stands for a mask that was not contiguous. A prefix is
   // unicast when its address is below 224.0.0.0.
   bool isValidPrefix(Zam::String const& prefix, bool ucastOnly);

   // Adds one route, or one via to a route that may be there already. What was done before a refusal stays: a new
   // route, its tag, the VRF it leaks into. The interface, the next hop, the VTEP address and the VRFs are none when
   // their text is empty; a via has a next hop or a VTEP address, not both; no egress VRF and the default one are the
   // same in a via. The MAC address counts when `routerMacGiven`, the VNI when it is not 0.
   bool manageRoute(Zam::Ptr<Routing::RouteList> const& rConfig, Zam::String const& vrfName, Zam::String const& prefix,
                    U16 preference, Routing::RouteType routeType, Zam::String const& leakToVrf,
                    Zam::String const& intfName, bool label, U32 labelValue, bool routerMacGiven, U32 vniValue,
                    Zam::String const& routerMac, bool ribBypass, Zam::String const& vtepAddr, bool vtepSipValidation,
                    U32 tag, Zam::String const& egressVrf, Zam::String const& hopStr, Zam::String const& nextHopName,
                    bool bfdTracked, Zam::String const& nexthopGroupName, Lumen::IntfId const& vxlanIntf,
                    Routing::RouteMetric metric);

 private:
   // The arguments of manageRoute() that describe the new route.
   struct NewRoute;

   bool mayJoin(Routing::RouteType existing, NewRoute const& added);
   bool manageVia(Routing::Route& route, NewRoute const& added);
   bool labelIs(Routing::Via& via, NewRoute const& added);
   bool evpnIs(Routing::Via& via, NewRoute const& added);
   bool hasRoomFor(Routing::Route const& route, Routing::Via const& via);
   bool refuse(std::string message);

   Zam::Ptr<Routing::Hardware::Status const> routingHardwareStatus_;
   Zam::String errorMsg_;
};

KIV_EXPORT Zam::Ptr<IpRouteCliPluginHelper> ipRouteCliPluginHelperFactory(
    Zam::Ptr<Routing::Hardware::Status const> const& routingHardwareStatus);
inline constexpr auto* IpRouteCliPluginHelperIs = &ipRouteCliPluginHelperFactory;

// Removes from a route configuration what leads out of one interface.
struct KIV_EXPORT ClearIntfRoutesAndViasHelper : Zam::ValueType {
   static constexpr auto zamDescription() {
      return Zam::describe<ClearIntfRoutesAndViasHelper>("Kiv::ClearIntfRoutesAndViasHelper");
   }

   // The vias through the interface, the names of such vias, and the routes that this leaves without a via; but no drop
   // route, and no route that had nothing to remove. An empty name is no interface.
   void clearIntfRoutesAndViasHelper(Zam::Ptr<Routing::RouteList> const& routeList, Zam::String const& intfName) const;
};

}  // namespace Kiv
