#pragma once

#include "Lumen/IntfId.h"
#include "Lumen/IpGenAddr.h"
#include "Vrf/VrfId.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"
#include "Zam/Value.h"

namespace Routing {

// A host that was resolved on an interface.
struct AttachedRouteKey : Zam::ValueType {
   Lumen::IntfId intfId;
   Lumen::IpGenAddr address;

   static constexpr auto zamDescription() {
      return Zam::describe<AttachedRouteKey>("Routing::AttachedRouteKey",
                                             Zam::attribute("intfId", &AttachedRouteKey::intfId),
                                             Zam::attribute("address", &AttachedRouteKey::address));
   }
};

struct AttachedRoute : Zam::ValueType {
   Vrf::VrfIdMap::VrfId vrfId = Vrf::VrfIdMap::defaultVrf;
   // Whether the host route is in force; one that is not counts nowhere.
   bool active = false;

   static constexpr auto zamDescription() {
      return Zam::describe<AttachedRoute>("Routing::AttachedRoute", Zam::attribute("vrfId", &AttachedRoute::vrfId),
                                          Zam::attribute("active", &AttachedRoute::active));
   }
};

// The attached host routes of one address family, over all VRFs. Written by the neighbor agents. Iteration order has
// no meaning.
class KIV_EXPORT AttachedRouteStatus final : public Zam::PtrInterface {
 public:
   using Routes = Zam::HashMap<AttachedRouteKey, AttachedRoute>;

   std::string_view fwkType() const noexcept override { return "Routing::AttachedRouteStatus"; }

   Routes const& route() const noexcept { return route_; }
   void routeIs(AttachedRouteKey const& key, AttachedRoute const& route) { route_.insertOrReplace(key, route); }
   void routeDel(AttachedRouteKey const& key) { route_.erase(key); }

 private:
   Routes route_;
};

}  // namespace Routing
