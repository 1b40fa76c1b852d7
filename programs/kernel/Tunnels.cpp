#include "programs/kernel/Tunnels.h"

namespace kernel {

using Lumen::MplsLabelOperation;

Tunnel::TunnelId Tunnels::tunnelOf(Hop const& hop) {
   if (!hop.encap) {
      return 0;
   }
   Hop way = hop;
   way.weight = 1;  // the route's, not the tunnel's
   auto const [index, isFirst] = tunnelIds_.use(way);
   Tunnel::TunnelId const tunnelId = Tunnel::tunnelIdOf(Tunnel::TunnelType::staticTunnel, index);
   if (isFirst) {
      state_.tunnels.push_back({tunnelId, tunnelEntryOf(hop, topology_, labelStackOf(hop.encap->labels))});
   }
   return tunnelId;
}

// The device that adds an outer header knows better than the route what kind it is.
Tunnel::TunnelFib::Entry tunnelEntryOf(Hop const& hop, Topology const& topology, Tunnel::TunnelFib::EncapId labels) {
   Tunnel::TunnelFib::Entry entry;
   entry.ipEncap = hop.encap->ip;
   if (auto const type = topology.tunnelType(hop.link); entry.ipEncap && type != Tunnel::IpEncapType::none) {
      entry.ipEncap.type = type;
   }
   entry.vias.push_back({{}, topology.interface(hop.link), hop.gateway, labels});
   return entry;
}

Tunnel::TunnelFib::EncapId Tunnels::labelStackOf(MplsLabelOperation const& labels) {
   if (labels.stackSize() == 0) {
      return 0;
   }
   auto const [id, isFirst] = labelStackIds_.use(labels);
   if (isFirst) {
      state_.labelStacks.push_back({id, labels});
   }
   return id;
}

}  // namespace kernel
