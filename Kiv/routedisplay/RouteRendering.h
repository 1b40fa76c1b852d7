#pragma once

#include "Kiv/routedisplay/CachedFec.h"
#include "Kiv/routedisplay/ProgrammedState.h"
#include "Kiv/routedisplay/RouteSorter.h"
#include "cliprint/RendererV2.h"

#include <string_view>

namespace Kiv {

// Prints the routes of one table: the flag and code columns, the prefix in column 10, preference and metric, and the
// vias, aligned under each other; in the model an entry keyed by the prefix. Nothing in it allocates per route.
template <class Family>
class RouteRendering {
 public:
   using Route = typename Family::Route;

   RouteRendering(RouteSorterOf<Family> const& sorter, cliprint::RendererV2& renderer)
       : sorter_(sorter),
         renderer_(renderer),
         programmed_(sorter) {}

   void printRoute(Route const& route);

 private:
   // What one route's line is made of.
   struct Line {
      Route const& route;
      std::string_view prefix;
      CachedFec const* fec;        // null without one
      std::string_view srcVrf;     // empty for a route that was not leaked
      std::string_view nexthop;    // of a single via
      std::string_view interface;  // of a single via

      bool leaked() const noexcept { return !srcVrf.empty(); }
      bool hasVias() const noexcept { return fec != nullptr && (fec->vias() != 0 || fec->viaEvpnEntry.size() != 0); }
   };
   // Where a list of vias is printed: its first via on the current line or not, the others at this width.
   struct Layout {
      std::size_t indent;
      U32 depth;
   };

   CachedFec const* preparedFec(Vault::Fib::FecId fecId) const;
   std::string_view srcVrfName(Route const& route) const;
   void printColumns(Line const& line);
   void printPreference(Line const& line);
   void printFormatRoute4(Line const& line);
   void printFormatRoute6(Line const& line);
   void printDirectlyConnected(Line const& line);
   void printWithoutNexthop(Line const& line);
   bool printIpVias(CachedFec const& fec, Layout const& layout);
   bool printIpVia(CachedFec const& fec, CachedVia const& via, U16 index, Layout const& layout);
   void printEvpnVia(Tunnel::TunnelTable::EvpnVxlanTunnelEntry const& entry);
   void printNexthopGroup(Routing::NexthopGroup::NexthopGroupId id);
   void printViaDetails(CachedFec const& fec, U16 index, char const* interfaceSeparator);
   void startViaLine(U16 index, Layout const& layout);
   void printAction(bool forward);
   void printDirectlyConnectedFlag(bool directlyConnected);

   RouteSorterOf<Family> const& sorter_;
   cliprint::RendererV2& renderer_;
   ProgrammedState programmed_;
   U32 printedVias_ = 0;  // of the current route
};

// Adds "(source VRF NAME) ", or "(NAME) " for several sources, and returns its width in columns.
int printSrcVrfHeader(cliprint::RendererV2& renderer, std::string_view srcVrf);

}  // namespace Kiv
