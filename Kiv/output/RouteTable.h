#pragma once

#include "Kiv/common/DefaultRouteState.h"
#include "Kiv/output/RouteRendering.h"
#include "cliprint/RendererV2.h"

#include <optional>
#include <string_view>

namespace Kiv {

// What is said around the routes.
struct TableFacts {
   bool routingDisabled = false;
   bool hardwareWarning = false;  // some routes are not programmed in hardware
   bool kernelWarning = false;    // nor in the kernel
   double requestTime = 0;        // seconds on the platform clock; 0 prints no timings
   double printStartTime = 0;
};

// The lines that open an IPv6 table.
template <class Family>
struct TableHeader {
   typename Family::Prefix requested{};  // the null prefix is all routes
   bool hasMask = false;                 // the request was a prefix, not a bare address
   U32 selected = 0;
   U32 total = 0;
};

// Prints a route table, part by part: what is above the routes, the gateway of last resort, which in the model opens
// the object "routes", the routes, which close it, and what is below.
template <class Family>
class RouteTable {
 public:
   using Route = typename Family::Route;

   RouteTable(TableFacts const& facts, RouteOutput const& output, cliprint::RendererV2& renderer)
       : facts_(facts),
         renderer_(renderer),
         routes_(output, renderer) {}

   void printAbove(TableHeader<Family> const& header, std::string_view legend);
   // Without a text where it is not shown.
   void printDefaultRoute(DefaultRouteState state, bool isShown, Route const* route);
   void printRoutes(Zam::OrderedMap<typename Family::Prefix, Route> const& routes);
   // Some route has more vias than were printed.
   bool leftOutVias() const noexcept { return routes_.leftOutVias(); }

 private:
   void printHeader(TableHeader<Family> const& header);
   void printWarnings();

   TableFacts facts_;
   cliprint::RendererV2& renderer_;
   RouteRendering<Family> routes_;
};

extern template class RouteTable<Ipv4>;
extern template class RouteTable<Ipv6>;

// The host route table: what the box receives, broadcasts to and reaches directly, an address a line.
// False when some route has more vias than are shown.
template <class Family>
bool printHostRoutes(TableFacts const& facts, RouteOutput const& output, cliprint::RendererV2& renderer,
                     Zam::OrderedMap<typename Family::Prefix, typename Family::Route> const& routes);

}  // namespace Kiv
