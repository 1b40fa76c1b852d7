#pragma once

#include "Kiv/routedisplay/ProgrammedState.h"
#include "Kiv/routedisplay/ViaRendering.h"

#include <array>
#include <string_view>

namespace Kiv {

// Prints the routes of one table: the flag and code columns, the prefix in column 10, preference and metric, and the
// vias, aligned under each other; in the model an entry keyed by the prefix.
//
// What routes have in common is rendered once and written again: the columns of a route type, and all that a FEC prints
// behind the metric, once a second route shares it. Nothing in it allocates per route.
template <class Family>
class RouteRendering {
 public:
   using Route = typename Family::Route;
   using Line = RouteLine<Family>;

   RouteRendering(RouteSorterOf<Family> const& sorter, cliprint::RendererV2& renderer)
       : sorter_(sorter),
         renderer_(renderer),
         programmed_(sorter),
         vias_(sorter, renderer) {}

   // What the route's tables say, printed by printFormatRoute. Nothing for a route to nexthop group 0.
   void printRoute(Route const& route);
   // False when the line has nothing to show and was left out.
   bool printFormatRoute(Line const& line);

 private:
   std::string_view srcVrfName(Route const& route) const;
   bool isSuppressed(Line const& line) const;
   void printColumns(Line const& line, std::string_view prefix);
   void printFlagsAndCode(Line const& line, bool inHardware, bool inKernel);
   void printFormatRoute4(Line const& line, std::size_t prefixSize);
   void printFormatRoute6(Line const& line);
   void printDirectlyConnected(Line const& line);
   void printFecVias(Line const& line, std::size_t indent);
   void printFecViasAnew(Line const& line, std::size_t indent);
   void printWithoutNexthop(Line const& line);
   void printSingleVia(Line const& line, std::size_t indent);
   void printPreference(Line const& line);
   void printSrcVrf(Line const& line);
   void printAction(bool forward);
   void printDirectlyConnectedFlag(bool directlyConnected);
   void printCbf(Line const& line, std::size_t indent);

   RouteSorterOf<Family> const& sorter_;
   cliprint::RendererV2& renderer_;
   ProgrammedState programmed_;
   ViaRendering<Family> vias_;
   std::string missingFec_;
   // By route type, of routes that are programmed and not leaked.
   struct Columns {
      bool isRecorded = false;
      cliprint::Recording recording{};
   };
   std::array<Columns, 64> columns_{};
};

// Adds "(source VRF NAME) ", or "(NAME) " for several sources, and returns its width in columns.
int printSrcVrfHeader(cliprint::RendererV2& renderer, std::string_view srcVrf);

}  // namespace Kiv
