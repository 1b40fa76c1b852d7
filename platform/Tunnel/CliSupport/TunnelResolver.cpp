#include "Tunnel/CliSupport/TunnelResolver.h"

#include <algorithm>
#include <string>

namespace Tunnel::CliSupport {

namespace {

std::vector<SortedTunVia> sorted(std::vector<TunnelFib::Via> const& vias,
                                 std::function<Zam::Ptr<SortedTunViaSet const>(TunnelId)> const& nested) {
   std::vector<SortedTunVia> all;
   all.reserve(vias.size());
   for (auto const& via : vias) {
      auto const further = via.intfId.tunnelId();
      all.push_back({via.intfId, via.hop, via.encapId, via.weight, further != 0 ? nested(further) : nullptr});
   }
   std::ranges::sort(all);
   return all;
}

}  // namespace

Zam::Ptr<SortedTunViaSet const> TunnelResolver::resolved(TunnelId tunnelId, U32 depth) {
   auto const* const entry = sources_.tunnelFib && depth <= maxDepth ? sources_.tunnelFib->entry(tunnelId) : nullptr;
   if (entry == nullptr) {
      return nullptr;
   }
   if (auto const* const known = sets_[depth].find(tunnelId); known != nullptr) {
      return *known;
   }
   auto const below = [this, depth](TunnelId further) { return resolved(further, depth + 1); };
   auto const set = Zam::makePtr<SortedTunViaSet>();
   set->primaryVia = sorted(entry->vias, below);
   set->backupVia = sorted(entry->backupVias, below);
   sets_[depth].insertOrReplace(tunnelId, set);
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

Zam::String TunnelResolver::interfaceText(Lumen::IntfId const& intfId) {
   return intfId.isNamed() ? Zam::String(intfId.name()) : Zam::String(intfId.stringValue());
}

Zam::String TunnelResolver::nexthopText(SortedTunVia const& via) {
   return via.hop.isEmpty() && isConnected(via) ? Lumen::IpAddr().stringValue() : via.hop.stringValue();
}

bool TunnelResolver::isConnected(SortedTunVia const& via) noexcept {
   return via.hop.isEmpty() ? via.intfId.isNamed() || via.intfId.isNexthopGroup() : via.hop.isZero();
}

std::vector<Zam::String> TunnelResolver::weightTexts(std::vector<SortedTunVia> const& vias) {
   U64 sum = 0;
   for (auto const& via : vias) {
      sum += via.weight;
   }
   std::vector<Zam::String> texts(vias.size());
   if (sum > vias.size()) {
      std::ranges::transform(vias, texts.begin(), [sum](auto const& via) {
         return Zam::String(std::to_string(via.weight) + "/" + std::to_string(sum));
      });
   }
   return texts;
}

Zam::Ptr<CachedTunVia const> TunnelResolver::makeCachedTunViaWithName(TunnelId tunnelId, Ways ways) {
   auto const tunnel = Zam::makePtr<CachedTunVia>();
   tunnel->tunnelId = tunnelId;
   addKnown(*tunnel);
   auto const set = ways != Ways::none ? resolved(tunnelId, 0) : nullptr;
   if (!set) {
      return tunnel;
   }
   auto const& vias = ways == Ways::backup ? set->backupVia : set->primaryVia;
   auto const weights = weightTexts(vias);
   for (std::size_t i = 0; i < vias.size(); ++i) {
      auto const& via = vias[i];
      auto const group = via.intfId.nexthopGroupId();
      auto const name = via.intfId.isNexthopGroup() && sources_.nexthopGroupName ? sources_.nexthopGroupName(group)
                                                                                 : std::string_view();
      tunnel->via.push_back({.intfId = via.intfId,
                             .interface = name.empty() ? interfaceText(via.intfId) : Zam::String(),
                             .nexthopAddr = nexthopText(via),
                             .isConnected = isConnected(via),
                             .nexthopGroupName = name,
                             .sortedTunViaSet = via.nested,
                             .labelStack = labelStack(via.encapId),
                             .weight = weights[i]});
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
