#pragma once

#include "Kiv/display/FecDisplay.h"
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

class ViaRendering;

class TunnelRendering {
 public:
   TunnelRendering(cliprint::RendererV2& renderer, FecDisplay& display, ViaRendering& vias, ViaBudget& budget)
       : renderer_(renderer),
         display_(display),
         vias_(vias),
         budget_(budget) {}

   // Which tunnel it is: by its outer header, by the policy that has set it up, or by type and index.
   void printTunnel(TunnelTarget const& tunnel, Vault::Fib::ForwardingAction action = {});
   // The ways of a via's tunnel, the backup ones after the others, three columns further in than `indent`; beneath
   // `fecDepth` FECs.
   void printWays(TunnelTarget const& tunnel, std::size_t indent, U32 fecDepth);

   // A policy each on its line behind `margin` and a blank, its ways behind `viaMargin` and a blank.
   void printSrTePolicySetModel(PolicyInfoSet const& set, std::size_t margin, std::size_t viaMargin, U32 fecDepth = 0);
   // What carries each class of traffic, of a route whose vias begin in column `width`; nothing when there is none.
   void checkAndPrintCbfInfo(CbfInfoSet const& set, std::size_t width, U32 fecDepth = 0);

 private:
   using Way = Tunnel::CliSupport::CachedTunVia::Via;

   // Where ways are printed.
   struct Place {
      std::size_t column;
      std::size_t further;  // where those of tunnels that they run over begin
      U32 fecDepth;
      U32 depth = 0;  // of tunnels
      bool tellsConnected = false;
   };
   void printWays(TunnelTarget const& tunnel, Place const& place);
   void printWayList(std::vector<Way> const& ways, Place const& place, bool backup);
   void printWay(Way const& way, Place const& place);
   void printIpTunnel(Tunnel::CliSupport::CachedIpTunnelInfo const& tunnel, Vault::Fib::ForwardingAction action);
   void printPolicyName(PolicyInfo const& policy);
   void printCarrier(PolicyInfo const& info, bool isOfClass, Place const& place);
   void printCarrierName(PolicyInfo const& info, bool isOfClass);
   void printClass(CbfInfo const& info, std::size_t column, Place const& place);
   void printWeight(std::string_view weight);

   cliprint::RendererV2& renderer_;
   FecDisplay& display_;
   ViaRendering& vias_;
   ViaBudget& budget_;
};

}  // namespace Kiv
