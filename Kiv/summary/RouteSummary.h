#pragma once

#include "L3/VrfName.h"
#include "Routing/AttachedRouteStatus.h"
#include "Routing/ConfigGen.h"
#include "Routing/Rib/RouteConfig.h"
#include "Routing/RouteList.h"
#include "Vault/RouteStatus.h"
#include "Vrf/VrfIdMap/Status.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/OrderedMap.h"
#include "Zam/Value.h"

namespace Kiv {

// How many routes one VRF has: by summary category, by mask length, and in all. The caller sets the inputs, calls the
// loads that it wants and reads the counts; a load adds to what is there. A null input is an empty one. Damage in a
// shared table ends the walk over it, is reported to the table, and what was counted before stays counted.
//
// Categories are those of the route type table, and the operational counts "staticPersistent", "staticNonPersistent",
// "ospfTotal", "bgpTotal" and "isisTotal". A category or length without routes has no entry.
struct KIV_EXPORT RouteSummary : Zam::ValueType {
   Zam::Ptr<Routing::ConfigGen const> routingConfig{};
   Zam::Ptr<Routing::RouteList const> routeList{};
   Zam::Ptr<Routing::RouteList const> routeListDynamic{};
   Zam::Ptr<Vault::Fib::RouteStatus const> routingStatus{};
   Zam::Ptr<Routing::AttachedRouteStatus const> attachedRtStatus{};
   Zam::Ptr<Vrf::VrfIdMap::Status const> vrfIdMap{};
   Zam::Ptr<Routing::Rib::RouteConfig const> routeCacheConfig{};
   L3::VrfName vrfName{};
   Zam::HashMap<Zam::String, U32> routeCountByType{};
   Zam::OrderedMap<U32, U32> routeCountByMask{};
   S32 totalNumRoutes = 0;

   // The routes of the FIB.
   void loadInternalStructures();
   // Hosts that were resolved on an interface, management interfaces left out.
   void loadAttachedRoutes();
   // Routes of the route cache that the FIB does not hold; they count as static. IPv4 only.
   void loadRouteCacheRoutes();

   void routeCountByTypeInc(Zam::String const& category, U32 count);
   void routeCountByMaskInc(U32 length, U32 count);
   void totalNumRoutesInc(U32 count);

   static constexpr auto zamDescription() {
      using S = RouteSummary;
      return Zam::describe<S>(
          "Kiv::RouteSummary", Zam::attribute("routingConfig", &S::routingConfig),
          Zam::attribute("routeList", &S::routeList), Zam::attribute("routeListDynamic", &S::routeListDynamic),
          Zam::attribute("routingStatus", &S::routingStatus), Zam::attribute("attachedRtStatus", &S::attachedRtStatus),
          Zam::attribute("vrfIdMap", &S::vrfIdMap), Zam::attribute("routeCacheConfig", &S::routeCacheConfig),
          Zam::attribute("vrfName", &S::vrfName), Zam::collection("routeCountByType", &S::routeCountByType),
          Zam::collection("routeCountByMask", &S::routeCountByMask),
          Zam::attribute("totalNumRoutes", &S::totalNumRoutes));
   }
};

// The same for IPv6, which has no route cache to count.
struct KIV_EXPORT Route6Summary : Zam::ValueType {
   Zam::Ptr<Routing::ConfigGen const> routingConfig{};
   Zam::Ptr<Routing::RouteList const> routeList{};
   Zam::Ptr<Routing::RouteList const> routeListDynamic{};
   Zam::Ptr<Vault::Fib6::RouteStatus const> routingStatus{};
   Zam::Ptr<Routing::AttachedRouteStatus const> attachedRtStatus{};
   Zam::Ptr<Vrf::VrfIdMap::Status const> vrfIdMap{};
   L3::VrfName vrfName{};
   Zam::HashMap<Zam::String, U32> routeCountByType{};
   Zam::OrderedMap<U32, U32> routeCountByMask{};
   S32 totalNumRoutes = 0;

   void loadInternalStructures();
   void loadAttachedRoutes();

   void routeCountByTypeInc(Zam::String const& category, U32 count);
   void routeCountByMaskInc(U32 length, U32 count);
   void totalNumRoutesInc(U32 count);

   static constexpr auto zamDescription() {
      using S = Route6Summary;
      return Zam::describe<S>(
          "Kiv::Route6Summary", Zam::attribute("routingConfig", &S::routingConfig),
          Zam::attribute("routeList", &S::routeList), Zam::attribute("routeListDynamic", &S::routeListDynamic),
          Zam::attribute("routingStatus", &S::routingStatus), Zam::attribute("attachedRtStatus", &S::attachedRtStatus),
          Zam::attribute("vrfIdMap", &S::vrfIdMap), Zam::attribute("vrfName", &S::vrfName),
          Zam::collection("routeCountByType", &S::routeCountByType),
          Zam::collection("routeCountByMask", &S::routeCountByMask),
          Zam::attribute("totalNumRoutes", &S::totalNumRoutes));
   }
};

}  // namespace Kiv
