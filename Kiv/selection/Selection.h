#pragma once

#include "Kiv/fecs/FecCache.h"
#include "Kiv/selection/OwnAddresses.h"
#include "Kiv/selection/RouteFilter.h"
#include "Kiv/selection/RouteTables.h"
#include "Zam/OrderedMap.h"

#include <optional>
#include <string_view>

namespace Kiv {

template <class Family>
using SortedRoutes = Zam::OrderedMap<typename Family::Prefix, typename Family::Route>;

// What the user asks for.
template <class Family>
struct RouteRequest {
   typename Family::Prefix prefix{};  // the null prefix asks for all routes
   bool longerPrefixes = false;       // everything inside the prefix instead of its longest match
   Zam::String protocol{};            // protocol code to show, empty for all
   bool showHidden = false;           // also martian, link-local and unresolved routes
   Zam::Ptr<RouteFilterColl const> filters{};
};

// Which routes a command shows, in prefix order. Every candidate passes filterRoute before it is stored. Its FEC is
// copied once, before the route is filtered, except in a request for longer prefixes.
template <class Family>
class Selection {
 public:
   using Prefix = typename Family::Prefix;
   using Route = typename Family::Route;

   Selection(RouteTables<Family> tables, RouteRequest<Family> request, FecCache& fecs)
       : tables_(std::move(tables)),
         request_(std::move(request)),
         fecs_(fecs) {}
   Selection(Selection const&) = delete;
   Selection& operator=(Selection const&) = delete;

   // For the request: the whole table, everything inside a prefix, or its longest match.
   void filterPrefixes();
   // For the host route table: the VRF's routes of host length, and the neighbours that have none.
   void filterHostPrefixes();

   SortedRoutes<Family> const& routes() const noexcept { return routes_; }
   SortedRoutes<Family>& routes() noexcept { return routes_; }
   // How many routes the filter let through.
   U32 selectedRoutes() const noexcept { return selectedRoutes_; }

   // Whether a route that is not the box's own has something to print.
   bool isPrintable(Route const& route) const { return isPrintable(route, fecs_.record(route.fecId)); }

   RouteTables<Family> const& tables() const noexcept { return tables_; }
   RouteRequest<Family> const& request() const noexcept { return request_; }
   FecCache& fecs() noexcept { return fecs_; }

 private:
   class Waiting;

   bool isPrintable(Route const& route, FecRecord const* fec) const;
   bool isHiddenByType(Route const& route) const;
   bool filterRoute(Route const& route, FecRecord const* fec);
   bool selected(Route const& route, FecRecord* fec);
   bool selected(Route const& route) { return selected(route, fecs_.copyAdjacency(route.fecId)); }
   void selectFromRouteCache(Prefix const& within);
   void filterWholeTable();
   template <class Visit>
   void lookUpAllWithin(Prefix const& within, Visit&& visit) const;
   bool worthLookingUpAll() const;
   void filterLongerPrefixes();
   void filterLongestMatch();
   void selectAttachedHosts();

   RouteTables<Family> tables_;
   RouteRequest<Family> request_;
   FecCache& fecs_;
   OwnAddresses<Family> ownAddresses_;
   SortedRoutes<Family> routes_;
   U32 selectedRoutes_ = 0;
};

extern template class Selection<Ipv4>;
extern template class Selection<Ipv6>;

}  // namespace Kiv
