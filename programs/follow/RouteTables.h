#pragma once

#include "Vault/UnprogrammedRouteStatus.h"
#include "programs/follow/FecPool.h"

#include <unistd.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace follow {

using state::VrfId;

// What has become of a route, for those who are told. Vias live during the call.
template <class Family>
struct RouteChange {
   VrfId vrfId;
   std::optional<typename Family::Route> before;
   std::optional<typename Family::Route> after;
   typename FecPool<Family>::Vias const* viasBefore;
   typename FecPool<Family>::Vias const* viasAfter;
};

// The route tables of one family and its FECs. Changes are staged and then committed together, what is as it was left
// out: FECs come before the routes that use them, a route is replaced in one step.
template <class Family>
class RouteTables {
 public:
   using Route = typename Family::Route;
   using Prefix = typename Family::Prefix;
   using Vias = typename FecPool<Family>::Vias;

   RouteTables(Hive::EntityManager const& manager, Encaps& encaps) : manager_(manager), fecs_(manager, encaps) {}

   // Opens the VRF's table, or makes one with room for so many routes.
   void vrfIs(VrfId vrfId, std::size_t routes) {
      if (tables_.contains(vrfId)) {
         return;
      }
      std::string const path = Family::routePath + std::to_string(vrfId);
      auto const capacity = static_cast<U32>(routes + routes / 8 + 64);
      auto const table = manager_.exists(path) ? manager_.open<Writer>(path) : manager_.create<Writer>(path, capacity);
      table->walk([&](Route const& route) { fecs_.used(route.fecId); });
      tables_.emplace(vrfId, table);
   }
   // Takes the tables of all VRFs but these away.
   template <class IsVrf>
   void othersDel(IsVrf&& isVrf, Time now) {
      for (auto table = tables_.begin(); table != tables_.end();) {
         if (isVrf(table->first)) {
            ++table;
            continue;
         }
         table->second->walk([&](Route const& route) { fecs_.released(route.fecId, now); });
         table = tables_.erase(table);
      }
      removeFiles(isVrf);
   }
   // When all tables are open.
   void opened(Time now) { fecs_.counted(now); }

   void routeIs(VrfId vrfId, Route route, Vias const& vias) {
      route.fecId = fecs_.idOf(vias);
      if (tables_.at(vrfId)->route(route.prefix) != route) {
         fecs_.used(route.fecId);
         staged_.push_back({vrfId, route.prefix, route});
      }
   }
   void routeDel(VrfId vrfId, Prefix const& prefix) {
      if (tables_.at(vrfId)->route(prefix)) {
         staged_.push_back({vrfId, prefix, std::nullopt});
      }
   }
   std::size_t staged() const { return staged_.size(); }

   // Calls tell(RouteChange<Family>) for each route that has changed; how many those were.
   template <class Tell>
   U64 commit(Time now, Tell&& tell) {
      fecs_.writeNew();
      U64 changes = 0;
      for (Staged const& staged : staged_) {
         Writer& table = *tables_.at(staged.vrfId);
         auto const before = table.route(staged.prefix);
         if (before == staged.route) {
            staged.route ? fecs_.released(staged.route->fecId, now) : void();
            continue;
         }
         staged.route ? table.routeIs(*staged.route) : void(table.routeDel(staged.prefix));
         ++changes;
         tell(RouteChange<Family>{staged.vrfId, before, staged.route, viasOf(before), viasOf(staged.route)});
         before ? fecs_.released(before->fecId, now) : void();
      }
      staged_.clear();
      return changes;
   }
   std::optional<Time> removeUnused(Time now) { return fecs_.removeUnused(now); }

   U64 routes(VrfId vrfId) const { return tables_.at(vrfId)->routes(); }
   template <class Visit>
   void walk(VrfId vrfId, Visit&& visit) const {
      tables_.at(vrfId)->walk(visit);
   }

 private:
   using Writer = typename Family::RouteWriter;

   struct Staged {
      VrfId vrfId;
      Prefix prefix;
      std::optional<Route> route;
   };

   Vias const* viasOf(std::optional<Route> const& route) const { return route ? fecs_.vias(route->fecId) : nullptr; }

   template <class IsVrf>
   void removeFiles(IsVrf&& isVrf) const {
      std::error_code error;
      for (auto const& entry :
           std::filesystem::directory_iterator(manager_.stateDir() + "/" + Family::routePath, error)) {
         std::string const name = entry.path().filename();
         if (name.find_first_not_of("0123456789") == std::string::npos &&
             !isVrf(static_cast<VrfId>(std::strtoul(name.c_str(), nullptr, 10)))) {
            std::filesystem::remove(entry.path(), error);
         }
      }
   }

   Hive::EntityManager const& manager_;
   FecPool<Family> fecs_;
   std::map<VrfId, Zam::Ptr<Writer>> tables_;
   std::vector<Staged> staged_;
};

}  // namespace follow
