#pragma once

#include "Lumen/IntfId.h"
#include "Lumen/MplsLabelOperation.h"
#include "Tunnel/IpTunnelEncap.h"
#include "Tunnel/TunnelId.h"
#include "Zam/Export.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"
#include "cliprint/RendererV2.h"

#include <string_view>
#include <vector>

// Tunnels as a display shows them: resolved, ordered, with the texts that print them.
namespace Tunnel::CliSupport {

// "LDP", "IS-IS SR", ...; "type 12" for a number without a name.
KIV_EXPORT Zam::String tunnelTypeText(TunnelType type);

// The outer header that a tunnel puts in front of its packets; false when it puts none.
class KIV_EXPORT CachedIpTunnelInfo {
 public:
   CachedIpTunnelInfo() = default;
   explicit CachedIpTunnelInfo(IpTunnelEncap const& encap) : encap_(encap) {}

   IpTunnelEncap const& encap() const noexcept { return encap_; }
   explicit operator bool() const noexcept { return static_cast<bool>(encap_); }
   // "IP-in-IP", "GRE", "VXLAN" or "UDP"; empty without an outer header.
   std::string_view name() const noexcept;
   bool isIpInIp() const noexcept { return encap_.type == IpEncapType::ipInIp; }
   // Source, destination and what else the header says. Behind an interface it begins with a comma and the kind of
   // header, which a via that has no interface to show has told of an IP-in-IP tunnel already.
   void print(cliprint::RendererV2& renderer, bool interfacePrinted) const;

   bool operator==(CachedIpTunnelInfo const&) const = default;

 private:
   IpTunnelEncap encap_;
};

// A tunnel and the ways that it takes, either its primary or its backup ones, by their index.
class KIV_EXPORT CachedTunVia final : public Zam::PtrInterface {
 public:
   struct Via {
      Lumen::IntfId intfId{};
      Zam::String interface {};   // empty when it stands for something else
      Zam::String nexthopAddr{};  // the unspecified address when the far end is on the link
      bool isConnected = false;   // that it is
      Zam::String nexthopGroupName{};
      Lumen::MplsLabelOperation labelStack{};
      Zam::String weight{};  // its share and the sum, among ways of unequal weight
   };

   std::string_view fwkType() const noexcept override { return "Tunnel::CliSupport::CachedTunVia"; }

   Zam::String tunnelTypeText() const { return CliSupport::tunnelTypeText(tunnelType(tunnelId)); }

   // What the tunnel is: its type, its index and what else is known of it.
   void printTunnelInfo(cliprint::RendererV2& renderer) const;

   TunnelId tunnelId = 0;
   Zam::String tunnelName;
   Zam::String endpoint;
   Zam::String algorithm;  // of a flexible algorithm
   CachedIpTunnelInfo ipTunnelInfo;
   std::vector<Via> via;
};

// What the line of one way of a tunnel shows; what is empty is left out.
struct TunnelViaInfo {
   std::string_view interface;
   std::string_view nexthop;
   Lumen::MplsLabelOperation const& labelStack;
   std::string_view nexthopGroupName;
   std::string_view weight;
   bool begun = false;  // the line says already that the far end is directly connected
};
KIV_EXPORT void printTunnelViaInfo(cliprint::RendererV2& renderer, TunnelViaInfo const& info);

// The labels that a via puts on a packet, outermost first: those of the stack, then one of its own. Nothing without.
KIV_EXPORT void maybeAddLabelStackToOutput(cliprint::RendererV2& renderer, Lumen::MplsLabelOperation const& labelStack,
                                           Lumen::MplsLabel label);

}  // namespace Tunnel::CliSupport
