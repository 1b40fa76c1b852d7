#pragma once

#include "Kiv/display/FecDisplay.h"
#include "Kiv/output/TunnelRendering.h"

#include <cstddef>

namespace Kiv {

// What decides how vias are laid out.
struct ViaLayout {
   // The vias share the route's line and align under the first; otherwise each begins a line of its own.
   bool sharesRouteLine = true;
   bool showLocalInterface = false;  // of vias over VXLAN
};

// Prints the vias of FECs, those that they resolve through beneath them.
class ViaRendering {
 public:
   ViaRendering(FecDisplay& display, ViaLayout layout, cliprint::RendererV2& renderer)
       : display_(display),
         layout_(layout),
         renderer_(renderer),
         tunnels_(renderer, display, *this, budget_) {}
   ViaRendering(ViaRendering const&) = delete;
   ViaRendering& operator=(ViaRendering const&) = delete;

   // Before each route.
   void reset() noexcept { budget_.reset(); }
   // Behind each route: says so in that column when it has more vias than were printed of it.
   void checkAndPrintLeftOut(std::size_t column);
   // Some route did.
   bool leftOut() const noexcept { return leftOut_; }
   TunnelRendering& tunnels() noexcept { return tunnels_; }

   // The vias of a FEC, the first one on the line where it stands when the layout wants that, the others `indent`
   // columns in. Whether any of them is directly connected.
   bool printIpVias(DisplayFec const& fec, std::size_t indent) { return printList(fec, {indent, indent, 0}); }
   // Where vias are printed: those of tunnels without the room of their own count from the indent.
   struct Place {
      std::size_t indent;
      std::size_t column;
      U32 depth;
   };
   // What a FEC that something resolves through leads to: its vias, or the policies in their place, and its classes.
   void printResolved(Vault::Fib::FecId fecId, Place const& place);
   // The policies that carry a FEC's traffic when it has no vias, and its classes, on lines from that column on.
   void printCarriers(DisplayFec const& fec, std::size_t column, U32 depth = 0);
   // Outside of a list of vias: one, and what follows beneath it from its column on.
   void printVia(DisplayVia const& via, std::size_t column) { printIpVia(via, {column, column, 0}); }
   void printEvpnVia(DisplayFec::EvpnVia const& entry);
   // The link alone, without a share of the traffic and a label, which it does not need.
   void printLink(DisplayVia via);
   void printNexthopGroup(GroupTarget const& group);

 private:
   using EvpnVia = DisplayFec::EvpnVia;

   bool printList(DisplayFec const& fec, Place const& place);
   bool printIpVia(DisplayVia const& via, Place const& place);
   void printEvpnVias(DisplayFec const& fec, Place const& place);
   void startViaLine(U32 index, Place const& place);
   void printTarget(LinkTarget const& target, DisplayVia via, Place const& place);
   void printTarget(FecTarget const& target, DisplayVia via, Place const& place);
   void printTarget(GroupTarget const& target, DisplayVia via, Place const& place);
   void printTarget(FallbackTarget const& target, DisplayVia via, Place const& place);
   void printTarget(TunnelTarget const& target, DisplayVia via, Place const& place);
   void printConnected(DisplayVia via);
   // What follows "via" or "is directly connected" on the line of a via; and what of it follows the interface.
   void printViaLine(DisplayVia const& via);
   void printViaDetails(DisplayVia const& via);
   void printInterface(DisplayVia const& via, std::string_view separator);
   void printEvpn(EvpnVia const& entry);

   FecDisplay& display_;
   ViaLayout layout_;
   cliprint::RendererV2& renderer_;
   ViaBudget budget_;
   bool leftOut_ = false;
   TunnelRendering tunnels_;
};

}  // namespace Kiv
