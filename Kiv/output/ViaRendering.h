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
         tunnels_(renderer, display.tunnels(), budget_) {}
   ViaRendering(ViaRendering const&) = delete;
   ViaRendering& operator=(ViaRendering const&) = delete;

   // Before each route.
   void reset() noexcept { budget_.reset(); }
   // The route has more vias than were printed of it.
   bool leftOut() const noexcept { return budget_.isExceeded(); }
   TunnelRendering& tunnels() noexcept { return tunnels_; }

   // The vias of a FEC, the first one on the line where it stands when the layout wants that, the others `indent`
   // columns in. Whether any of them is directly connected.
   bool printIpVias(DisplayFec const& fec, std::size_t indent) { return printList(fec, {indent, 0}); }
   // The link alone, without a share of the traffic and a label, which it does not need.
   void printLink(DisplayVia via);
   void printNexthopGroup(GroupTarget const& group);

 private:
   using EvpnVia = DisplayFec::EvpnVia;

   struct Place {
      std::size_t indent;
      U32 depth;

      std::size_t column() const noexcept { return indent + std::size_t{4} * depth; }
   };

   bool printList(DisplayFec const& fec, Place const& place);
   bool printIpVia(DisplayVia const& via, Place const& place);
   void printEvpnVias(DisplayFec const& fec, Place const& place);
   void startViaLine(U32 index, Place const& place);
   void printTarget(LinkTarget const& target, DisplayVia via, Place const& place);
   void printTarget(FecTarget const& target, DisplayVia via, Place const& place);
   void printTarget(GroupTarget const& target, DisplayVia via, Place const& place);
   void printTarget(FallbackTarget const& target, DisplayVia via, Place const& place);
   void printTarget(TunnelTarget const& target, DisplayVia via, Place const& place);
   void printTunnel(TunnelTarget const& target, Vault::Fib::ForwardingAction action);
   void printIpTunnel(Tunnel::CliSupport::CachedIpTunnelInfo const& tunnel, Vault::Fib::ForwardingAction action);
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
   TunnelRendering tunnels_;
};

}  // namespace Kiv
