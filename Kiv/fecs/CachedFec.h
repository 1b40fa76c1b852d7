#pragma once

#include "Kiv/fecs/FecStore.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"

namespace Kiv {

// One FEC of a sorter, as filters and scripts see it: its vias in display order. It is a handle of what the sorter
// keeps; what is changed through one is changed for every route that uses the FEC. A FEC that was made by itself
// belongs to nobody until a sorter gets it.
class KIV_EXPORT CachedFec final : public Zam::PtrInterface {
 public:
   using Vias = Zam::OrderedMap<CachedVia, bool>;
   using EvpnVia = Tunnel::TunnelTable::EvpnVxlanTunnelEntry;

   explicit CachedFec(Vault::Fib::FecId fecId);
   CachedFec(Zam::Ptr<FecStore> store, FecStore::Number number) noexcept : store_(std::move(store)), number_(number) {}
   ~CachedFec() override;
   std::string_view fwkType() const noexcept override { return "Kiv::CachedFec"; }

   Vault::Fib::FecId fecId() const noexcept { return record().fecId; }

   // A copy. One via each, in their order, without copying all: at().
   Vias via() const;
   U32 vias() const noexcept { return record().viaCount; }
   void viaIs(CachedVia const& via, bool value);
   // False when there was none.
   bool viaDel(CachedVia const& via);
   void viaDelAll();

   StoredVia const& at(U32 index) const noexcept { return record().firstVia[index]; }
   Lumen::IntfId const& intfId(StoredVia const& via) const noexcept { return store_->arena().leg(via).intfId; }
   // Removes the vias that `matches(StoredVia const&)` does not hold for, and calls `removed` for each before it goes.
   template <class Matches, class Removed>
   void keep(Matches const& matches, Removed const& removed);

   U16 primaryVias() const noexcept { return record().primaryVias; }
   U32 preparedVias() const noexcept { return record().preparedVias; }
   bool hasBackup() const noexcept { return record().hasBackup; }
   bool hierarchical() const noexcept { return record().hierarchical; }
   U64 weightSum() const noexcept { return record().weightSum; }

   // Vias over VXLAN, which only the route cache has.
   std::vector<EvpnVia> const& viaEvpnEntry() const noexcept { return extras().evpnVias; }
   void viaEvpnEntryIs(std::vector<EvpnVia> vias);

   // Of the sorter, or its own.
   Zam::Ptr<FecStore> const& store() const noexcept { return store_; }
   FecStore::Number number() const noexcept { return number_; }
   FecRecord const& record() const noexcept { return std::as_const(*store_).record(number_); }
   FecExtras const& extras() const noexcept { return std::as_const(*store_).extras(record()); }
   // What this stands for goes over to a sorter's store.
   void movedTo(Zam::Ptr<FecStore> const& store, FecStore::Number number) {
      store_ = store;
      number_ = number;
   }

 private:
   Zam::Ptr<FecStore> store_;
   FecStore::Number number_;
};

template <class Matches, class Removed>
void CachedFec::keep(Matches const& matches, Removed const& removed) {
   for (U32 i = 0; i < vias();) {
      StoredVia const via = at(i);
      if (matches(via)) {
         ++i;
      } else {
         removed(via);
         store_->viaDel(store_->record(number_), via);
      }
   }
}

KIV_EXPORT Zam::Ptr<CachedFec> cachedFecFactory(Vault::Fib::FecId fecId);

}  // namespace Kiv
