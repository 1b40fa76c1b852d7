#pragma once

#include "Kiv/display/PolicyInfo.h"
#include "Kiv/fecs/CachedVia.h"
#include "Tunnel/CliSupport/CachedTunVia.h"
#include "Tunnel/TunnelTable/EvpnVxlanTunnelEntry.h"

#include <string>
#include <string_view>
#include <variant>

// What a display shows of a via, as values; how they are written is the output's business.
namespace Kiv {

// Out of an interface, or to whatever the interface's text stands for.
struct LinkTarget {};
// Through another FEC.
struct FecTarget {
   Vault::Fib::FecId fecId{};
};
// Into a nexthop group, whose name may be unknown.
struct GroupTarget {
   Routing::NexthopGroup::NexthopGroupId id = 0;
   std::string_view name{};
};
// Looked up again in a VRF.
struct FallbackTarget {
   Routing::Rib::DecapActionType decapType{};
   std::string_view vrfName{};
};
// Into a tunnel, which a policy may have set up.
struct TunnelTarget {
   Tunnel::CliSupport::CachedTunVia const* primary = nullptr;
   Tunnel::CliSupport::CachedTunVia const* backup = nullptr;  // null when it has no backup ways
   PolicyInfoSet const* policies = nullptr;                   // null when no policy has set it up
};
using ViaTarget = std::variant<LinkTarget, FecTarget, GroupTarget, FallbackTarget, TunnelTarget>;

// The views are good as long as the display that gave the via.
struct DisplayVia {
   Lumen::IpGenAddr nexthop{};  // zero when there is none to show
   bool isConnected = false;    // the destination itself is on the link
   bool isBackup = false;
   std::string_view interface {};  // empty for what its target tells
   std::string_view interfaceDescription{};
   std::string_view egressVrf{};  // of a via that leaves through another VRF
   Lumen::MplsLabel label{};
   std::string weight{};  // share and sum, among vias of unequal cost
   Vault::Fib::ForwardingAction forwardingAction{};
   Tunnel::CliSupport::CachedIpTunnelInfo const* ipTunnel = nullptr;  // out of a tunnel interface
   Tunnel::TunnelTable::EvpnVxlanTunnelEntry const* vxlan = nullptr;  // over VXLAN
   ViaTarget target{};

   template <class Target>
   Target const* leadsTo() const noexcept {
      return std::get_if<Target>(&target);
   }
   bool isIpInIp() const noexcept { return ipTunnel != nullptr && ipTunnel->isIpInIp(); }
};

// In the host route table.
struct HostVia {
   bool isLink = true;          // else it shows as in a route, and the rest of this does not
   Lumen::IpGenAddr nexthop{};  // zero when there is none to show
   std::string_view interface {};
   bool toCpu = false;  // it leads to the box itself
};

}  // namespace Kiv
