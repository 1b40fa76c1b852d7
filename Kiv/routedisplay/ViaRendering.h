#pragma once

#include "Kiv/routedisplay/RouteLine.h"
#include "Kiv/routedisplay/RouteSorter.h"
#include "Kiv/routedisplay/TunnelRendering.h"

#include <cstddef>

namespace Kiv {

// Prints the vias of FECs, those that they resolve through beneath them.
template <class Family>
class ViaRendering {
 public:
   ViaRendering(RouteSorterOf<Family> const& sorter, cliprint::RendererV2& renderer);
   ViaRendering(ViaRendering const&) = delete;
   ViaRendering& operator=(ViaRendering const&) = delete;

   // Before each route.
   void reset() noexcept { budget_.reset(); }
   TunnelRendering& tunnels() noexcept { return tunnels_; }

   // The FEC as it can be printed; null when the sorter does not have it.
   CachedFec* preparedFec(Vault::Fib::FecId fecId);

   // The vias of a FEC, the first one on the line where it stands when the family wants that, the others `indent`
   // columns in. Whether any of them is directly connected.
   bool printIpVias(CachedFec const& fec, std::size_t indent) { return printList(fec, {indent, 0}); }
   // What follows "via" or "is directly connected" on the line of a via; and what of it follows the interface.
   void printViaLine(ViaLine const& via);
   void printViaDetails(ViaLine const& via);
   void printInterface(ViaLine const& via, std::string_view separator);
   void printNexthopGroup(CachedNhgVia const& via);
   static ViaLine viaLine(CachedFec const& fec, U16 index);

 private:
   struct Layout {
      std::size_t indent;
      U32 depth;

      std::size_t column() const noexcept { return indent + std::size_t{4} * depth; }
   };

   bool printList(CachedFec const& fec, Layout const& layout);
   bool printIpVia(CachedFec const& fec, CachedVia const& via, U16 index, Layout const& layout);
   void printEvpnVias(CachedFec const& fec, U16 index, Layout const& layout);
   void printResolvedVias(CachedVia const& via, ViaLine const& line, Layout const& layout);
   void printTarget(CachedFec const& fec, CachedVia const& via, U16 index, ViaLine line, Layout const& layout);
   void printFallback(CachedFallbackVia const& via);
   void printTunnel(CachedFec const& fec, CachedVia const& via, U16 index);
   void printIpTunnel(Tunnel::CliSupport::CachedIpTunnelInfo const& tunnel, Vault::Fib::ForwardingAction action);
   void printTunnelVias(CachedFec const& fec, U16 index, Layout const& layout);
   void printConnected(ViaLine const& via);
   void printEvpn(Tunnel::TunnelTable::EvpnVxlanTunnelEntry const& entry);
   void startViaLine(U16 index, Layout const& layout);

   RouteSorterOf<Family> const& sorter_;
   cliprint::RendererV2& renderer_;
   Tunnel::CliSupport::TunnelResolver resolver_;
   ViaBudget budget_;
   TunnelRendering tunnels_;
};

}  // namespace Kiv
