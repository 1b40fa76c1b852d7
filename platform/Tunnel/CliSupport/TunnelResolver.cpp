#include "Tunnel/CliSupport/TunnelResolver.h"

#include "Tunnel/CliSupport/Weights.h"

#include <algorithm>
#include <string>

namespace Tunnel::CliSupport {

namespace {

std::vector<SortedTunVia> sorted(std::vector<TunnelFib::Via> const& vias) {
   std::vector<SortedTunVia> all;
   all.reserve(vias.size());
   for (auto const& via : vias) {
      all.push_back({via.intfId, via.hop, via.encapId, via.weight});
   }
   std::ranges::sort(all);
   return all;
}

// The far end is on the link itself.
bool isConnected(SortedTunVia const& via) noexcept {
   return via.hop.isEmpty() ? via.intfId.isNamed() || via.intfId.isNexthopGroup() : via.hop.isZero();
}

}  // namespace

bool TunnelSources::has(TunnelId tunnelId) const {
   auto const knows = [tunnelId](auto const& table) { return table && table->entry(tunnelId) != nullptr; };
   return knows(tunnelFib) || std::apply([&](auto const&... table) { return (knows(table) || ...); }, tunnelTables);
}

Zam::Ptr<SortedTunViaSet const> TunnelResolver::sortedTunViaSet(TunnelId tunnelId) {
   auto const* const entry = sources_.tunnelFib ? sources_.tunnelFib->entry(tunnelId) : nullptr;
   if (entry == nullptr) {
      return nullptr;
   }
   if (auto const* const known = sets_.find(tunnelId); known != nullptr) {
      return *known;
   }
   auto const set = Zam::makePtr<SortedTunViaSet>();
   set->primaryVia = sorted(entry->vias);
   set->backupVia = sorted(entry->backupVias);
   sets_.insertOrReplace(tunnelId, set);
   return set;
}

Lumen::MplsLabelOperation TunnelResolver::labelStack(TunnelFib::EncapId encapId) const {
   auto const* const known = sources_.tunnelFib ? sources_.tunnelFib->labelStackEncap(encapId) : nullptr;
   return known != nullptr ? *known : Lumen::MplsLabelOperation();
}

bool TunnelResolver::hasBackup(TunnelId tunnelId) const {
   auto const* const entry = sources_.tunnelFib ? sources_.tunnelFib->entry(tunnelId) : nullptr;
   return entry != nullptr && !entry->backupVias.empty();
}

CachedTunVia::Via TunnelResolver::way(SortedTunVia const& via, Zam::String weight) const {
   bool const connected = isConnected(via);
   auto const name = via.intfId.isNexthopGroup() && sources_.nexthopGroupName
                         ? sources_.nexthopGroupName(via.intfId.nexthopGroupId())
                         : std::string_view();
   return {.intfId = via.intfId,
           .interface = via.intfId.name(),
           .nexthopAddr = via.hop.isEmpty() && connected ? Lumen::IpAddr().stringValue() : via.hop.stringValue(),
           .isConnected = connected,
           .nexthopGroupName = name,
           .labelStack = labelStack(via.encapId),
           .weight = std::move(weight)};
}

Zam::Ptr<CachedTunVia const> TunnelResolver::makeCachedTunViaWithName(TunnelId tunnelId, Ways ways) {
   auto const tunnel = Zam::makePtr<CachedTunVia>();
   tunnel->tunnelId = tunnelId;
   addKnown(*tunnel);
   if (auto const set = sortedTunViaSet(tunnelId)) {
      auto const& vias = ways == Ways::backup ? set->backupVia : set->primaryVia;
      auto weights = weightTexts(vias);
      for (std::size_t i = 0; i < vias.size(); ++i) {
         tunnel->via.push_back(way(vias[i], std::move(weights[i])));
      }
   }
   return tunnel;
}

// Its name, and what the table of its type knows of it.
void TunnelResolver::addKnown(CachedTunVia& tunnel) const {
   if (auto const* const name = sources_.tunnelNames ? sources_.tunnelNames->tunnelName(tunnel.tunnelId) : nullptr;
       name != nullptr) {
      tunnel.tunnelName = *name;
   }
   if (auto const* const entry = sources_.tunnelFib ? sources_.tunnelFib->entry(tunnel.tunnelId) : nullptr;
       entry != nullptr) {
      tunnel.ipTunnelInfo = CachedIpTunnelInfo(entry->ipEncap);
   }
   auto const addFrom = [this, &tunnel](auto const& table) {
      auto const* const entry = table ? table->entry(tunnel.tunnelId) : nullptr;
      if (entry == nullptr) {
         return;
      }
      tunnel.endpoint = entry->endpoint.stringValue();
      if (entry->algorithm != 0) {
         auto const* const name =
             sources_.flexAlgoConfig ? sources_.flexAlgoConfig->algorithmName(entry->algorithm) : nullptr;
         tunnel.algorithm = name != nullptr ? *name : Zam::String(std::to_string(entry->algorithm));
      }
   };
   std::apply([&](auto const&... table) { (addFrom(table), ...); }, sources_.tunnelTables);
}

}  // namespace Tunnel::CliSupport
