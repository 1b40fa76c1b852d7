#pragma once

#include "FlexAlgo/Config.h"
#include "Tunnel/CliSupport/CachedTunVia.h"
#include "Tunnel/TunnelFib/TunnelFib.h"
#include "Tunnel/TunnelTable/ProtocolTunnelNameStatus.h"
#include "Tunnel/TunnelTable/TunnelTables.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"

#include <functional>
#include <string_view>
#include <tuple>

namespace Tunnel::CliSupport {

// The tables that tell of tunnels; any may be null.
struct TunnelSources {
   template <class T>
   using Table = Zam::Ptr<T const>;

   Table<TunnelFib::TunnelFib> tunnelFib{};
   std::tuple<Table<TunnelTable::IsisSrTunnelTable>, Table<TunnelTable::StaticTunnelTable>,
              Table<TunnelTable::LdpTunnelTable>, Table<TunnelTable::BgpLuTunnelTable>,
              Table<TunnelTable::NexthopGroupTunnelTable>, Table<TunnelTable::RsvpLerTunnelTable>,
              Table<TunnelTable::IsisFlexAlgoTunnelTable>>
       tunnelTables{};
   Table<TunnelTable::ProtocolTunnelNameStatus> tunnelNames{};
   Table<FlexAlgo::Config> flexAlgoConfig{};
   std::function<std::string_view(U32)> nexthopGroupName{};  // empty for an id that has none
};

// Follows tunnels through the tables, also tunnels over tunnels. Every tunnel is resolved once per level at which it
// appears, and levels end, so tunnels that run over each other in a circle end too.
class KIV_EXPORT TunnelResolver {
 public:
   // Ways are followed through this many tunnels below the first.
   static constexpr U32 maxDepth = 16;

   explicit TunnelResolver(TunnelSources sources) : sources_(std::move(sources)) {}

   // The ways of a tunnel; null when it is not set up.
   Zam::Ptr<SortedTunViaSet const> sortedTunViaSet(TunnelId tunnelId) { return resolved(tunnelId, 0); }
   // The labels that a way pushes.
   Lumen::MplsLabelOperation labelStack(TunnelFib::EncapId encapId) const;

   enum class Ways { none, primary, backup };
   // The tunnel by name, with the ways asked for. Never null: a tunnel that is not set up has no ways.
   Zam::Ptr<CachedTunVia const> makeCachedTunViaWithName(TunnelId tunnelId, Ways ways);
   bool hasBackup(TunnelId tunnelId) const;

   // The texts of one way's interface and next hop.
   static Zam::String interfaceText(Lumen::IntfId const& intfId);
   static Zam::String nexthopText(SortedTunVia const& via);
   // The far end is on the link itself; the text of its next hop is then the unspecified address.
   static bool isConnected(SortedTunVia const& via) noexcept;
   // "2/5" for each way when their weights differ, else empty.
   static std::vector<Zam::String> weightTexts(std::vector<SortedTunVia> const& vias);

 private:
   Zam::Ptr<SortedTunViaSet const> resolved(TunnelId tunnelId, U32 depth);
   void addKnown(CachedTunVia& tunnel) const;

   TunnelSources sources_;
   Zam::HashMap<TunnelId, Zam::Ptr<SortedTunViaSet const>> sets_[maxDepth + 1];
};

}  // namespace Tunnel::CliSupport
