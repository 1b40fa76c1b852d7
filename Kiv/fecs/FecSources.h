#pragma once

#include "Interface/AllIntfConfigDir.h"
#include "L3/VrfName.h"
#include "Lumen/AddressFamily.h"
#include "Routing/NexthopGroup/NexthopGroupId.h"
#include "Routing/Rib/RouteCache/Evpn/ViaConfig.h"
#include "SrTePolicy/CbfFecOverrideMap.h"
#include "SrTePolicy/PolicyStatus.h"
#include "Tunnel/CliSupport/TunnelResolver.h"
#include "Tunnel/TunnelTable/TunnelTables.h"
#include "Vault/ForwardingStatus.h"
#include "Vrf/VrfIdMap/Status.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

#include <functional>

namespace Kiv {

// The VRF of an interface; that of an interface without a VRF record.
struct InterfaceVrf {
   Vrf::VrfIdMap::VrfId vrfId = Vrf::VrfIdMap::noVrf;
   L3::VrfName vrfName{};
};

// Where FECs come from, and what tells of the things that their vias lead to. Any table may be null; what it would tell
// is then not known.
struct FecSources {
   template <class T>
   using Table = Zam::Ptr<T const>;

   Lumen::AddressFamily family = Lumen::AddressFamily::ipv4;  // of the routes
   Vrf::VrfIdMap::VrfId vrfId = 0;                            // theirs too

   Table<Vault::Fib::ForwardingStatus> forwardingStatus{};
   Table<Vault::Fib6::ForwardingStatus> forwarding6Status{};
   Table<Vault::FibGen::ForwardingStatus> forwardingGenStatus{};  // when present, it holds every FEC
   Table<Vault::Fib::ForwardingStatus> policyForwardingStatus{};
   Table<Routing::Rib::RouteCache::Evpn::ViaConfig> routeCacheEvpnViaConfig{};
   Table<Tunnel::TunnelTable::EvpnVxlanTunnelTable> evpnVxlanTunnelTable{};
   Table<SrTePolicy::CbfFecOverrideMap> cbfFecOverrideMap{};
   std::function<InterfaceVrf(Lumen::IntfId const&)> interfaceVrf{};

   Table<SrTePolicy::PolicyStatus> policyStatus{};
   Table<Vrf::VrfIdMap::Status> vrfIdMap{};
   Table<Interface::AllIntfConfigDir> allIntfConfig{};
   Tunnel::CliSupport::TunnelSources tunnels{};
   Zam::HashMap<Routing::NexthopGroup::NexthopGroupId, Zam::String> nexthopGroupNames{};

   // Set up, or known to the table of its type.
   bool hasTunnel(Tunnel::TunnelId tunnelId) const {
      return tunnels.has(tunnelId) || (evpnVxlanTunnelTable && evpnVxlanTunnelTable->entry(tunnelId) != nullptr);
   }
   // Empty for an id that has none.
   std::string_view nexthopGroupName(Routing::NexthopGroup::NexthopGroupId id) const {
      auto const* const name = nexthopGroupNames.find(id);
      return name != nullptr ? std::string_view(*name) : std::string_view();
   }
};

}  // namespace Kiv
