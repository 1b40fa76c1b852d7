#pragma once

#include "Kiv/common/Family.h"
#include "Kiv/common/SafeLookup.h"
#include "Kiv/common/Watchdog.h"
#include "L3/VrfName.h"
#include "Routing/AttachedRouteStatus.h"
#include "Routing/Rib/RouteConfig.h"

#include <optional>
#include <vector>

namespace Kiv {

// Where the routes of a VRF come from. Any table may be null, and then holds none.
template <class Family>
struct RouteTables {
   using Prefix = typename Family::Prefix;
   using Route = typename Family::Route;
   template <class T>
   using Table = Zam::Ptr<T const>;

   Vrf::VrfIdMap::VrfId vrfId = 0;
   L3::VrfName vrfName{};
   Table<typename Family::RouteStatus> routingStatus{};
   Table<Routing::AttachedRouteStatus> attachedRouteStatus{};
   Table<Routing::Rib::RouteConfig> routeCacheConfig{};
   Table<typename Family::IpStatus> ipStatus{};

   // The route of exactly that prefix. A table that is missing or damaged holds none; damage is reported to the table.
   std::optional<Route> fibRoute(Prefix const& prefix) const {
      return safeLookup(routingStatus.get(), [&](auto const& table) { return table.route(prefix); });
   }

   // Null without such an entry.
   Routing::Rib::RouteConfigEntry const* routeCacheEntry(Prefix const& prefix) const {
      return routeCacheConfig ? routeCacheConfig->route({{}, Lumen::IpGenPrefix(prefix), vrfId}) : nullptr;
   }

   // Both let other activities in between two routes.
   template <class Visit>
   void walkFib(Visit&& visit) const {
      if (routingStatus) {
         U32 count = 0;
         routingStatus->walk([&](Route const& route) {
            visit(route);
            allowWatchdog(count);
         });
      }
   }
   // Calls `visit(prefix, entry)` for the VRF's route cache entries of this family that the FIB does not hold. Those
   // that are gone by their turn are left out.
   template <class Visit>
   void walkRouteCache(Visit&& visit) const;
};

template <class Family>
template <class Visit>
void RouteTables<Family>::walkRouteCache(Visit&& visit) const {
   if (!routeCacheConfig) {
      return;
   }
   std::vector<Routing::Rib::RouteConfigKey> keys;
   for (auto const& [key, entry] : routeCacheConfig->route()) {
      if (key.vrfId == vrfId && key.prefix.family() == Family::addressFamily) {
         keys.push_back(key);
      }
   }
   U32 count = 0;
   for (auto const& key : keys) {
      auto const prefix = Family::prefixOf(key.prefix);
      if (auto const* const entry = routeCacheConfig->route(key); entry != nullptr && !fibRoute(prefix)) {
         visit(prefix, *entry);
      }
      allowWatchdog(count);
   }
}

}  // namespace Kiv
