#pragma once

#include "Kiv/display/ProgrammedState.h"
#include "Kiv/output/Recordings.h"
#include "Kiv/output/RouteLine.h"
#include "Kiv/output/ViaRendering.h"
#include "Zam/OrderedMap.h"
#include "cliprint/AttrInfo.h"

#include <array>
#include <optional>
#include <string_view>

namespace Kiv {

// What a table of routes is shown from.
struct RouteOutput {
   FecDisplay& display;
   ProgrammedState const& programmed;
   Vrf::VrfIdMap::VrfId vrfId = 0;
   bool nexthopGroupDisplay = false;  // a nexthop group route prints its group instead of its vias
   bool showLocalInterface = false;   // of vias over VXLAN
};

// Prints the routes of one table: the flag and code columns, the prefix in column 10, preference and metric, and the
// vias, aligned under each other; in the model an entry keyed by the prefix.
//
// What routes have in common is rendered once and written again: the columns of a route type, and all that a FEC prints
// behind the metric. A FEC must not change while its routes are printed. What is written again allocates nothing.
template <class Family>
class RouteRendering {
 public:
   using Route = typename Family::Route;
   using Prefix = typename Family::Prefix;
   using Line = RouteLine<Family>;

   RouteRendering(RouteOutput const& output, cliprint::RendererV2& renderer)
       : output_(output),
         renderer_(renderer),
         recordings_(renderer),
         vias_(output.display, {Family::viasShareRouteLine, output.showLocalInterface}, renderer) {}

   // All of them, in order. Stops when nobody takes the output any more.
   void printRoutes(Zam::OrderedMap<Prefix, Route> const& routes);
   // Nothing for a nexthop group route to group 0, or without a group or any other way.
   void printRoute(Route const& route) { printRoute(route, output_.display.find(route.fecId)); }
   // Some route has more vias than were printed; what there is of it says so.
   bool leftOutVias() const noexcept { return vias_.leftOut(); }

 private:
   using FecNumber = FecStore::Number;

   void printRoute(Route const& route, FecNumber const* fec);
   FecRecording const* recordingFor(Line const& line, FecNumber const* fec) const;
   void printAnew(Line& line);
   void prefetch(FecNumber const* fec) const;
   void prefetchVias(FecNumber const* fec) const;
   std::string_view srcVrfName(Route const& route) const;

   template <class Body>
   void printLine(Line const& line, RouteBody kind, Body const& printBody);
   void printColumns(Line const& line, bool forward);
   struct Flags;
   void printColumns(typename Family::RouteType type, Flags const& flags);
   std::size_t printHead(Line const& line, RouteBody kind);
   void printBody(Line const& line, RouteBody kind, std::size_t headWidth);
   void printConnected(Line const& line);
   void printNothing(Line const& line);
   void printVias(Line const& line, RouteBody kind, std::size_t indent);
   bool printFecVias(Line const& line, std::size_t indent);
   void printGroup(GroupTarget const& group, std::size_t indent);
   void printUnresolved(Vault::Fib::FecId fecId, std::size_t indent);
   void printPreference(Route const& route);
   void printSrcVrf(Line const& line);
   void printFlag(cliprint::AttrName name, bool value);
   static std::size_t viaColumn(Route const& route, std::size_t headWidth);

   RouteOutput output_;
   cliprint::RendererV2& renderer_;
   FecRecordings recordings_;
   ViaRendering vias_;
   std::array<std::optional<cliprint::Recording>, 64> columns_{};  // by route type
};

// Adds "(source VRF NAME) ", or "(NAME) " for several sources, and returns its width in columns.
int printSrcVrfHeader(cliprint::RendererV2& renderer, std::string_view srcVrf);

}  // namespace Kiv
