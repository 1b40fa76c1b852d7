#pragma once

#include "Lumen/IpGenPrefix.h"
#include "Routing/RouteKey.h"
#include "Routing/RouteType.h"
#include "Routing/Via.h"
#include "Vrf/VrfId.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"
#include "Zam/Value.h"

#include <vector>

namespace Routing::Rib {

struct RouteConfigKey : Zam::ValueType {
   Lumen::IpGenPrefix prefix;
   Vrf::VrfIdMap::VrfId vrfId = Vrf::VrfIdMap::defaultVrf;

   static constexpr auto zamDescription() {
      return Zam::describe<RouteConfigKey>("Routing::Rib::RouteConfigKey",
                                           Zam::attribute("prefix", &RouteConfigKey::prefix),
                                           Zam::attribute("vrfId", &RouteConfigKey::vrfId));
   }
};

// A route that is kept out of the forwarding table until traffic asks for it. Its next hops are those of the FEC, or,
// with FEC id 0, its own vias.
struct RouteConfigEntry {
   RouteType routeType = RouteType::forward;
   RoutePreference preference = 1;
   RouteMetric metric = 0;
   U64 fecId = 0;
   std::vector<Via> vias;

   bool operator==(RouteConfigEntry const&) const = default;
};

// The route cache configuration: the cached routes of both address families and all VRFs. Written by the RIB agent.
// Iteration order has no meaning.
class KIV_EXPORT RouteConfig final : public Zam::PtrInterface {
 public:
   using Routes = Zam::HashMap<RouteConfigKey, RouteConfigEntry>;

   std::string_view fwkType() const noexcept override { return "Routing::Rib::RouteConfig"; }

   Routes const& route() const noexcept { return route_; }
   // Null when there is none of that key.
   RouteConfigEntry const* route(RouteConfigKey const& key) const { return route_.find(key); }
   void routeIs(RouteConfigKey const& key, RouteConfigEntry route) { route_.insertOrReplace(key, std::move(route)); }
   void routeDel(RouteConfigKey const& key) { route_.erase(key); }

 private:
   Routes route_;
};

}  // namespace Routing::Rib
