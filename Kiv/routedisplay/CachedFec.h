#pragma once

#include "Kiv/routedisplay/CachedVia.h"
#include "Kiv/routedisplay/PerVia.h"
#include "Lumen/MplsLabelOperation.h"
#include "Tunnel/TunnelTable/EvpnVxlanTunnelEntry.h"
#include "Vault/Fib.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

#include <set>

namespace Kiv {

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
   std::set<U16> hostToCpu;  // in the host route table: vias that lead to the box itself

   // Keyed by position in the FEC's own table.
   PerVia<Vault::Fib::ForwardingAction> viaForwardingAction;
   PerVia<Zam::String, U32> viaWeight;
   PerVia<Tunnel::TunnelTable::EvpnVxlanTunnelEntry> viaEvpnEntry;
};

KIV_EXPORT Zam::Ptr<CachedFec> cachedFecFactory(Vault::Fib::FecId fecId);

}  // namespace Kiv
