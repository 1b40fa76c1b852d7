#pragma once

#include "FlexAlgo/Config.h"
#include "Lumen/IpGenPrefix.h"
#include "Tunnel/TunnelId.h"
#include "Tunnel/TunnelTable/EvpnVxlanTunnelEntry.h"
#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"

// What each tunnel protocol knows about its tunnels, by tunnel id: one table per protocol, written by its agent. The
// ways that a tunnel takes are in the tunnel FIB.
namespace Tunnel::TunnelTable {

struct TunnelEntry : Zam::ValueType {
   // What the tunnel leads to.
   Lumen::IpGenPrefix endpoint;
   FlexAlgo::AlgorithmId algorithm = 0;  // that the tunnel's way was computed with; 0 of all but flexible algorithms

   static constexpr auto zamDescription() {
      return Zam::describe<TunnelEntry>("Tunnel::TunnelTable::TunnelEntry",
                                        Zam::attribute("endpoint", &TunnelEntry::endpoint),
                                        Zam::attribute("algorithm", &TunnelEntry::algorithm));
   }
};

template <TunnelType type, class EntryType>
class BasicTunnelTable : public Zam::PtrInterface {
 public:
   using Entry = EntryType;
   using Entries = Zam::HashMap<TunnelId, Entry>;
   static constexpr TunnelType tunnelType = type;

   Entries const& entry() const noexcept { return entry_; }
   // Null when there is no such tunnel.
   Entry const* entry(TunnelId tunnelId) const { return entry_.find(tunnelId); }
   // RangeError for a tunnel of another type: nobody would look for it here.
   void entryIs(TunnelId tunnelId, Entry const& entry) {
      if (Tunnel::tunnelType(tunnelId) != tunnelType) {
         throw Zam::RangeError("Tunnel::TunnelTable::tunnelId of another tunnel type not allowed");
      }
      entry_.insertOrReplace(tunnelId, entry);
   }
   void entryDel(TunnelId tunnelId) { entry_.erase(tunnelId); }

 private:
   Entries entry_;
};

class KIV_EXPORT EvpnVxlanTunnelTable final : public BasicTunnelTable<TunnelType::evpnVxlan, EvpnVxlanTunnelEntry> {
 public:
   std::string_view fwkType() const noexcept override { return "Tunnel::TunnelTable::EvpnVxlanTunnelTable"; }
};

class KIV_EXPORT IsisSrTunnelTable final : public BasicTunnelTable<TunnelType::isisSr, TunnelEntry> {
 public:
   std::string_view fwkType() const noexcept override { return "Tunnel::TunnelTable::IsisSrTunnelTable"; }
};

class KIV_EXPORT StaticTunnelTable final : public BasicTunnelTable<TunnelType::staticTunnel, TunnelEntry> {
 public:
   std::string_view fwkType() const noexcept override { return "Tunnel::TunnelTable::StaticTunnelTable"; }
};

class KIV_EXPORT LdpTunnelTable final : public BasicTunnelTable<TunnelType::ldp, TunnelEntry> {
 public:
   std::string_view fwkType() const noexcept override { return "Tunnel::TunnelTable::LdpTunnelTable"; }
};

class KIV_EXPORT BgpLuTunnelTable final : public BasicTunnelTable<TunnelType::bgpLu, TunnelEntry> {
 public:
   std::string_view fwkType() const noexcept override { return "Tunnel::TunnelTable::BgpLuTunnelTable"; }
};

class KIV_EXPORT NexthopGroupTunnelTable final : public BasicTunnelTable<TunnelType::nexthopGroup, TunnelEntry> {
 public:
   std::string_view fwkType() const noexcept override { return "Tunnel::TunnelTable::NexthopGroupTunnelTable"; }
};

class KIV_EXPORT RsvpLerTunnelTable final : public BasicTunnelTable<TunnelType::rsvpLer, TunnelEntry> {
 public:
   std::string_view fwkType() const noexcept override { return "Tunnel::TunnelTable::RsvpLerTunnelTable"; }
};

class KIV_EXPORT IsisFlexAlgoTunnelTable final : public BasicTunnelTable<TunnelType::isisFlexAlgo, TunnelEntry> {
 public:
   std::string_view fwkType() const noexcept override { return "Tunnel::TunnelTable::IsisFlexAlgoTunnelTable"; }
};

}  // namespace Tunnel::TunnelTable
