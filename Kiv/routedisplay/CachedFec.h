#pragma once

#include "Kiv/routedisplay/CachedVia.h"
#include "Kiv/routedisplay/PerVia.h"
#include "Vault/Fib.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

namespace Kiv {

// A sorter's private copy of one FEC: its vias in display order, and the texts that print them. It is filled when the
// FEC is first met and shared by every route that uses it; only a filter that prunes vias changes it afterwards.
class KIV_EXPORT CachedFec final : public Zam::PtrInterface {
 public:
   using Vias = Zam::OrderedMap<CachedVia, bool>;

   explicit CachedFec(Vault::Fib::FecId fecId) noexcept : fecId_(fecId) {}
   ~CachedFec() override;
   std::string_view fwkType() const noexcept override { return "Kiv::CachedFec"; }

   Vault::Fib::FecId fecId() const noexcept { return fecId_; }

   Vias const& via() const noexcept { return via_; }
   U32 vias() const noexcept { return static_cast<U32>(via_.size()); }
   void viaIs(CachedVia via, bool value) {
      via_.insertOrReplace(std::move(via), value);
      textsGone();
   }
   bool viaDel(CachedVia const& via) {
      textsGone();
      return via_.erase(via);
   }
   void viaDelAll() {
      textsGone();
      via_.clear();
   }

   // Keyed by position in display order; valid while `textsPrepared` is set.
   PerVia<Zam::String> nexthopAddr;
   PerVia<Zam::String> interface;
   PerVia<Zam::String> interfaceDescription;
   PerVia<Zam::String> egressVrf;   // of vias that leave through another VRF
   PerVia<Zam::String> weightText;  // of unequal-cost vias: the via's weight and the sum
   bool textsPrepared = false;

   // The host route table prepares texts of its own, and which vias lead to the box itself; the count says how many.
   PerVia<bool> hostToCpu;
   U32 preparedVias = 0;

   // Keyed by position in the FEC's own table.
   PerVia<Vault::Fib::ForwardingAction> viaForwardingAction;
   PerVia<Zam::String> viaWeight;

   U16 primaryVias = 0;
   bool hasBackup = false;
   bool hierarchical = false;  // some via points at another FEC
   U64 weightSum = 0;          // of the primary vias

 private:
   // Vias have moved; what was prepared for their places is no longer theirs.
   void textsGone() noexcept {
      textsPrepared = false;
      preparedVias = 0;
   }

   Vault::Fib::FecId fecId_;
   Vias via_;
};

}  // namespace Kiv
