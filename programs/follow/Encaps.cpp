#include "programs/follow/Encaps.h"

#include "programs/kernel/Tunnels.h"

namespace follow {

namespace {

bool isOurs(Tunnel::TunnelFib::Entry const& entry) {
   return entry.vias.size() == 1 && entry.backupVias.empty();
}

}  // namespace

Encaps::Encaps(state::State const& earlier) {
   for (state::LabelStack const& stack : earlier.labelStacks) {
      labelStacks_.adopt(stack.id, stack.labels, stack.labels);
   }
   for (auto const& tunnel : earlier.tunnels) {
      auto const encapId = isOurs(tunnel.value) ? tunnel.value.vias.front().encapId : 0;
      if (isOurs(tunnel.value) && (encapId == 0 || labelStacks_.has(encapId))) {
         tunnels_.adopt(Tunnel::tunnelIndex(tunnel.tunnelId), tunnel.value, keyOf(tunnel.value));
      }
   }
   for (auto const& [index, tunnel] : tunnels_.all()) {
      if (auto const encapId = tunnel.value.vias.front().encapId; encapId != 0) {
         ++labelStacks_.at(encapId).uses;
      }
   }
}

auto Encaps::keyOf(Entry const& entry) -> EntryKey {
   auto const& ip = entry.ipEncap;
   auto const& via = entry.vias.front();
   return {ip.type, ip.source, ip.destination, ip.key, ip.ttl, ip.tos, via.intfId, via.hop, via.encapId};
}

Tunnel::TunnelId Encaps::tunnelOf(kernel::Hop const& hop, kernel::Topology const& topology) {
   if (!hop.encap) {
      return 0;
   }
   auto const& labels = hop.encap->labels;
   U64 const labelStack = labels.stackSize() != 0 ? labelStacks_.idOf(labels, labels).first : 0;
   Entry const entry = kernel::tunnelEntryOf(hop, topology, labelStack);
   auto const [index, isNew] = tunnels_.idOf(entry, keyOf(entry));
   if (isNew && labelStack != 0) {
      ++labelStacks_.at(labelStack).uses;
   }
   isChanged_ |= isNew;
   return Tunnel::tunnelIdOf(Tunnel::TunnelType::staticTunnel, index);
}

void Encaps::used(Tunnel::TunnelId tunnelId) {
   if (U64 const index = Tunnel::tunnelIndex(tunnelId); tunnels_.has(index)) {
      ++tunnels_.at(index).uses;
   }
}

void Encaps::released(Tunnel::TunnelId tunnelId) {
   U64 const index = Tunnel::tunnelIndex(tunnelId);
   if (!tunnels_.has(index) || --tunnels_.at(index).uses != 0) {
      return;
   }
   if (U64 const stack = tunnels_.at(index).value.vias.front().encapId;
       stack != 0 && --labelStacks_.at(stack).uses == 0) {
      labelStacks_.erase(stack);
   }
   tunnels_.erase(index);
   isChanged_ = true;
}

void Encaps::putInto(state::State& state) const {
   for (auto const& [index, known] : tunnels_.all()) {
      state.tunnels.push_back({Tunnel::tunnelIdOf(Tunnel::TunnelType::staticTunnel, index), known.value});
   }
   for (auto const& [id, known] : labelStacks_.all()) {
      state.labelStacks.push_back({id, known.value});
   }
}

}  // namespace follow
