#pragma once

#include "FlexAlgo/Config.h"
#include "Tunnel/CliSupport/CachedTunVia.h"
#include "Tunnel/CliSupport/SortedTunViaSet.h"
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

   // Whether a tunnel is set up, or known to the table of its type.
   KIV_EXPORT bool has(TunnelId tunnelId) const;
};

// Finds the ways of tunnels in the tables, of each tunnel once.
class KIV_EXPORT TunnelResolver {
 public:
   explicit TunnelResolver(TunnelSources sources) : sources_(std::move(sources)) {}

   // The ways of a tunnel; null when it is not set up.
   Zam::Ptr<SortedTunViaSet const> sortedTunViaSet(TunnelId tunnelId);

   enum class Ways { primary, backup };
   // The tunnel by name, with the ways asked for. Never null: a tunnel that is not set up has no ways.
   Zam::Ptr<CachedTunVia const> makeCachedTunViaWithName(TunnelId tunnelId, Ways ways);
   bool hasBackup(TunnelId tunnelId) const;
   // One way, ready for display.
   CachedTunVia::Via way(SortedTunVia const& via, Zam::String weight) const;

 private:
   Lumen::MplsLabelOperation labelStack(TunnelFib::EncapId encapId) const;
   void addKnown(CachedTunVia& tunnel) const;

   TunnelSources sources_;
   Zam::HashMap<TunnelId, Zam::Ptr<SortedTunViaSet const>> sets_;
};

}  // namespace Tunnel::CliSupport
