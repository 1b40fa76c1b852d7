#pragma once

#include "Tunnel/TunnelId.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

namespace Tunnel::TunnelTable {

// The names that protocols gave to their tunnels. Written by the tunnel agents; a tunnel without a name is not here.
class KIV_EXPORT ProtocolTunnelNameStatus final : public Zam::PtrInterface {
 public:
   using TunnelNames = Zam::HashMap<TunnelId, Zam::String>;

   std::string_view fwkType() const noexcept override { return "Tunnel::TunnelTable::ProtocolTunnelNameStatus"; }

   TunnelNames const& tunnelName() const noexcept { return tunnelName_; }
   // Null when the tunnel has no name.
   Zam::String const* tunnelName(TunnelId tunnelId) const { return tunnelName_.find(tunnelId); }
   void tunnelNameIs(TunnelId tunnelId, Zam::String name) { tunnelName_.insertOrReplace(tunnelId, std::move(name)); }
   void tunnelNameDel(TunnelId tunnelId) { tunnelName_.erase(tunnelId); }

 private:
   TunnelNames tunnelName_;
};

}  // namespace Tunnel::TunnelTable
