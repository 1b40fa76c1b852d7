#pragma once

#include "Routing/Route.h"
#include "Zam/HashMap.h"

namespace Routing {

// The static routes of one address family in one VRF, configured or installed at run time. Written by the
// configuration commands and agents, read by displays and savers. Owns its routes; iteration order has no meaning.
class KIV_EXPORT RouteList final : public Zam::PtrInterface {
 public:
   using Routes = Zam::HashMap<RouteKey, Zam::Ptr<Route>>;

   std::string_view fwkType() const noexcept override { return "Routing::RouteList"; }

   Routes const& route() const noexcept { return route_; }
   // Null when there is none of that key.
   Route const* route(RouteKey const& key) const {
      auto const* const found = route_.find(key);
      return found != nullptr ? found->get() : nullptr;
   }
   Route* route(RouteKey const& key) { return const_cast<Route*>(std::as_const(*this).route(key)); }

   // A fresh route of that type, in place of any earlier one of that key.
   Zam::Ptr<Route> routeIs(RouteKey const& key, RouteType routeType) {
      return route_.insertOrReplace(key, Zam::makePtr<Route>(key, routeType));
   }
   void routeDel(RouteKey const& key) { route_.erase(key); }

 private:
   Routes route_;
};

}  // namespace Routing
