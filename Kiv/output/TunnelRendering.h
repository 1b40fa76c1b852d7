#pragma once

#include "Kiv/display/PolicyInfo.h"
#include "Tunnel/CliSupport/TunnelResolver.h"
#include "cliprint/RendererV2.h"

#include <cstddef>

// The ways of tunnels and policies, on lines of their own beneath the via, or the route, that leads into them.
namespace Kiv {

// Vias that resolve through further FECs or tunnels are printed down to this depth, so that a loop among them ends.
inline constexpr U32 maxViaDepth = 16;

// Depth alone does not end what FECs and tunnels with several ways to each other expand to. No real route has this many
// vias, of every kind and at every depth together. Each route has a budget of its own.
class ViaBudget {
 public:
   static constexpr U32 maxOfRoute = 65'536;

   void reset() noexcept { *this = {}; }
   // Whether one more via may be printed, which is counted then. Flushes a full buffer; false also when nobody takes
   // the output any more.
   bool take(cliprint::RendererV2& renderer);
   // A via was left out since the reset.
   bool isExceeded() const noexcept { return isExceeded_; }

 private:
   U32 left_ = maxOfRoute;
   bool isExceeded_ = false;
};

class TunnelRendering {
 public:
   TunnelRendering(cliprint::RendererV2& renderer, Tunnel::CliSupport::TunnelResolver& tunnels, ViaBudget& budget)
       : renderer_(renderer),
         tunnels_(tunnels),
         budget_(budget) {}

   // The ways of a via's tunnel, or its backup ways, three columns further in than `indent`.
   void printFormatTunVia(Tunnel::CliSupport::CachedTunVia const& tunVia, PolicyInfoSet const* policies,
                          std::size_t indent, bool backup);

   // Which policy it is.
   void printPolicyName(PolicyInfo const& policy);
   // A policy each on its line behind `margin` and a blank, its vias behind `viaMargin` and a blank.
   void printSrTePolicySetModel(PolicyInfoSet const& set, std::size_t margin, std::size_t viaMargin);
   // The vias of all the policies, behind `margin` and a blank; those of tunnels they run over behind `nestedMargin`.
   void printSrTePolicySetViaModel(PolicyInfoSet const& set, std::size_t margin, std::size_t nestedMargin);
   // What carries each class of traffic, of a route whose vias begin in column `width`; nothing when there is none.
   void checkAndPrintCbfInfo(CbfInfoSet const& set, std::size_t width);

 private:
   using SortedTunVia = Tunnel::CliSupport::SortedTunVia;
   using SortedTunViaSet = Tunnel::CliSupport::SortedTunViaSet;

   // A line of its own for a way that runs over a further tunnel, and the ways of that beneath.
   struct Nested {
      SortedTunViaSet const* set;
      Lumen::MplsLabelOperation const& labelStack;
      Lumen::IntfId const& intfId;
      std::size_t indent;
      U32 depth;
      bool backup;
   };
   void printNestedTunnelVias(Nested const& tunnel);
   void printNestedList(std::vector<SortedTunVia> const& vias, Nested const& tunnel, std::size_t indent, bool backup);

   void printTunVia(Tunnel::CliSupport::CachedTunVia::Via const& via, bool tellsConnected, std::size_t indent,
                    bool backup);
   void printSegmentLists(SortedTunVias const& vias, std::size_t margin, std::size_t nestedMargin);
   void printPolicy(PolicyInfo const& policy, std::size_t viaMargin);
   void printColoredTep(ColoredTepInfo const& ctep, std::string_view weight, std::size_t viaMargin);
   void printWeight(std::string_view weight);
   void printCbfInfoSetModel(CbfInfoSet const& set, std::size_t margin, std::size_t viaMargin);
   void printPlainVia(SortedTunVia const& via, Lumen::MplsLabelOperation const& labelStack, std::string_view weight);

   cliprint::RendererV2& renderer_;
   Tunnel::CliSupport::TunnelResolver& tunnels_;
   ViaBudget& budget_;
};

}  // namespace Kiv
