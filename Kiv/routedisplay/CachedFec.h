#pragma once

#include "Kiv/routedisplay/CachedVia.h"
#include "Kiv/routedisplay/PerVia.h"
#include "Kiv/routedisplay/PolicyInfo.h"
#include "Lumen/MplsLabelOperation.h"
#include "Tunnel/CliSupport/CachedTunVia.h"
#include "Tunnel/TunnelTable/EvpnVxlanTunnelEntry.h"
#include "Vault/Fib.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

#include <set>
#include <vector>

namespace Kiv {

// Traffic that a FEC of the policy table sends into a tunnel, or, without one, straight to a next hop.
struct PolicyVia {
   Tunnel::TunnelId tunnelId = 0;
   Tunnel::CliSupport::SortedTunVia nexthop{};
   Lumen::MplsLabel label{};
   U16 weight = 1;
};
struct CbfClassVias {
   std::vector<U8> dscp{};
   std::vector<PolicyVia> vias{};
};

// A sorter's private copy of one FEC: its vias in display order, and the texts that print them. It is filled when the
// FEC is first met and shared by every route that uses it; only a filter that prunes vias and a host that is reached
// through a further interface change it afterwards.
class KIV_EXPORT CachedFec final : public Zam::PtrInterface {
 public:
   using Vias = Zam::OrderedMap<CachedVia, bool>;

   explicit CachedFec(Vault::Fib::FecId fecId) noexcept : fecId_(fecId) {}
   ~CachedFec() override;
   std::string_view fwkType() const noexcept override { return "Kiv::CachedFec"; }

   Vault::Fib::FecId fecId() const noexcept { return fecId_; }

   Vias const& via() const noexcept { return via_; }
   U32 vias() const noexcept { return static_cast<U32>(via_.size()); }
   void viaIs(CachedVia via, bool value);
   // False when there was none.
   bool viaDel(CachedVia const& via);
   void viaDelAll();
   // Some via leaves through an interface, or through what stands for one.
   bool hasValidIntf() const noexcept { return hasValidIntf_; }

   // FECs of this adjacency type send their traffic into SR-TE policies.
   static constexpr U8 adjTypeSrTePolicy = 20;
   bool isSrTePolicy() const noexcept { return fecId_.value() >> 56U == adjTypeSrTePolicy; }
   // All vias forward into nexthop groups; known once the texts are prepared.
   bool isNexthopGroup() const noexcept { return nhgVia.size() != 0 && nhgVia.size() == vias(); }

 private:
   // Vias have moved; what was prepared for their places is no longer theirs.
   void textsGone() noexcept {
      textsPrepared = false;
      preparedVias = viaEvpnEntry.size();
   }

   // First, on one cache line: every route that is selected asks for it.
   bool hasValidIntf_ = false;
   Vault::Fib::FecId fecId_;
   Vias via_;

 public:
   bool hasBackup = false;
   bool hierarchical = false;  // some via points at another FEC
   U16 primaryVias = 0;
   U64 weightSum = 0;  // of the primary vias

   // How many vias are prepared: those of an EVPN FEC when it is copied, others when the host route table needs them.
   U32 preparedVias = 0;
   // Whether what is keyed by position in display order, below, is up to date.
   bool textsPrepared = false;

   // Keyed by position in display order.
   PerVia<Zam::String> viaTypeString;
   PerVia<Zam::String> nexthopAddr;
   PerVia<Zam::String> interface;
   PerVia<Zam::String> interfaceDescription;
   PerVia<Vrf::VrfIdMap::VrfId> vrfId;  // of vias that leave through another VRF, as its name
   PerVia<L3::VrfName> vrfName;
   PerVia<Zam::String> weightText;  // of unequal-cost vias: the via's weight and the sum
   PerVia<Lumen::MplsLabel> label;
   PerVia<Lumen::MplsLabelOperation> viaLabelStack;
   PerVia<CachedNhgVia> nhgVia;
   PerVia<Zam::String> nhgName;
   PerVia<CachedFallbackVia> fallbackVia;
   PerVia<Zam::Ptr<Tunnel::CliSupport::CachedTunVia const>> tunVia;  // of vias that lead into a tunnel
   PerVia<Zam::Ptr<Tunnel::CliSupport::CachedTunVia const>> tunViaBackupVia;
   PerVia<PolicyInfoSet> tunViaPolicyInfoSet;                      // of those whose tunnel is a policy
   PerVia<Tunnel::CliSupport::CachedIpTunnelInfo> ipEncapTunInfo;  // of vias out of a tunnel interface
   PerVia<Tunnel::TunnelTable::EvpnVxlanTunnelEntry> vxlanEntry;   // of vias over VXLAN
   std::set<U16> hostToCpu;  // in the host route table: vias that lead to the box itself

   // Keyed by position in the FEC's own table.
   PerVia<Vault::Fib::ForwardingAction> viaForwardingAction;
   PerVia<Zam::String, U32> viaWeight;
   PerVia<Tunnel::TunnelTable::EvpnVxlanTunnelEntry> viaEvpnEntry;

   // The VXLAN next hops of vias, which their tunnel tells.
   Zam::OrderedMap<CachedVia, Tunnel::TunnelTable::EvpnVxlanTunnelEntry> vxlanOfVia;
   // What carries the traffic besides the vias: as copied, and resolved once it is printed.
   std::vector<PolicyVia> policyVias;
   std::vector<CbfClassVias> cbfClasses;
   PolicyInfoSet policyInfoSet;
   CbfInfoSet cbfInfoSet;
};

KIV_EXPORT Zam::Ptr<CachedFec> cachedFecFactory(Vault::Fib::FecId fecId);

}  // namespace Kiv
