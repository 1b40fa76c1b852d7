#pragma once

#include "Kiv/routedisplay/ProgrammedState.h"
#include "Kiv/routedisplay/ViaRendering.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kiv {

// Prints the routes of one table: the flag and code columns, the prefix in column 10, preference and metric, and the
// vias, aligned under each other; in the model an entry keyed by the prefix.
//
// What routes have in common is rendered once and written again: the columns of a route type, and all that a FEC prints
// behind the metric, once a second route shares it. A FEC must not change while its routes are printed. What is written
// again allocates nothing.
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

   // All of them, in order. Stops when nobody takes the output any more.
   void printRoutes(typename RouteSorterOf<Family>::SortedRoutes const& routes);
   // What the route's tables say, printed by printFormatRoute. Nothing for a route to nexthop group 0.
   void printRoute(Route const& route);
   // False when the line has nothing to show and was left out.
   bool printFormatRoute(Line const& line);

 private:
   std::string_view srcVrfName(Route const& route) const;
   bool isSuppressed(Line const& line) const;
   void printFlagsAndCode(Line const& line, bool inHardware, bool inKernel);
   void printFormatRoute4(Line const& line);
   void printFormatRoute6(Line const& line);
   void printDirectlyConnected(Line const& line);
   void printFecVias(Line const& line, std::size_t indent);
   void printWithoutNexthop(Line const& line);
   void printSingleVia(Line const& line, std::size_t indent);
   void printPreference(S32 preference, U32 metric);
   void printSrcVrf(Line const& line);
   void printAction(bool forward);
   void printDirectlyConnectedFlag(bool directlyConnected);
   void printCbf(Line const& line, std::size_t indent);

   static std::size_t viaColumn(typename Family::Prefix const& prefix, S32 preference, U32 metric);

   // What routes with the same FEC print alike.
   struct FecText {
      bool isRecorded = false;
      bool directlyConnected = false;  // it is all that follows the prefix, without preference and metric
      cliprint::Recording recording{};
   };
   bool printAgain(Route const& route);
   void prefetch(Route const& route) const;
   void printColumns(typename Family::RouteType type);
   FecText* fecText(Vault::Fib::FecId fecId);
   template <class Print>
   void printFecText(Line const& line, std::size_t indent, bool directlyConnected, Print const& print);

   RouteSorterOf<Family> const& sorter_;
   cliprint::RendererV2& renderer_;
   ProgrammedState programmed_;
   ViaRendering<Family> vias_;
   std::string missingFec_;
   std::array<std::optional<cliprint::Recording>, 64> columns_{};  // by route type
   Zam::HashMap<Vault::Fib::FecId, U32> fecTextIndex_;
   std::vector<FecText> fecTexts_;
};

// Adds "(source VRF NAME) ", or "(NAME) " for several sources, and returns its width in columns.
int printSrcVrfHeader(cliprint::RendererV2& renderer, std::string_view srcVrf);

}  // namespace Kiv
