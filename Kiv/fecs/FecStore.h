#pragma once

#include "Kiv/fecs/FecSources.h"
#include "Kiv/fecs/ViaArena.h"
#include "Tunnel/CliSupport/SortedTunViaSet.h"
#include "Tunnel/TunnelTable/EvpnVxlanTunnelEntry.h"
#include "Zam/OrderedMap.h"

#include <deque>
#include <memory>
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

// What few FECs have.
struct FecExtras {
   std::vector<Tunnel::TunnelTable::EvpnVxlanTunnelEntry> evpnVias{};  // of a FEC of the route cache
   Zam::OrderedMap<CachedVia, Tunnel::TunnelTable::EvpnVxlanTunnelEntry> vxlanOfVia{};
   // What carries the traffic besides the vias.
   std::vector<PolicyVia> policyVias{};
   std::vector<CbfClassVias> cbfClasses{};
};

// One FEC as it is kept: nearly every one is a few plain vias.
struct FecRecord {
   Vault::Fib::FecId fecId{};
   StoredVia* firstVia = nullptr;  // in display order
   FecExtras* extras = nullptr;    // null when it has none
   U32 number = 0;
   U32 viaCount = 0;
   U32 weightSum = 0;     // of the primary vias
   U32 preparedVias = 0;  // EVPN vias when it is copied; all when the host route table has shown them
   U16 primaryVias = 0;
   U16 tableVias = 0;  // in the FEC's own table
   bool hasBackup : 1 = false;
   bool hierarchical : 1 = false;  // some via points at another FEC
   bool isResolved : 1 = false;    // some via leads out: through an interface, or a tunnel that is there
   bool isUsed : 1 = false;        // by a selected route
   bool isShared : 1 = false;      // by several
   bool hostLink : 1 = false;      // the host route that showed it first stands for a link

   // FECs of this adjacency type send their traffic into SR-TE policies.
   static constexpr U8 adjTypeSrTePolicy = 20;
   bool isSrTePolicy() const noexcept { return fecId.value() >> Vault::Fib::FecId::idBits == adjTypeSrTePolicy; }
   void use() noexcept {
      isShared = isUsed;
      isUsed = true;
   }
   std::span<StoredVia const> vias() const noexcept { return {firstVia, viaCount}; }
};

// The FECs of one sorter, or a single one that is not in a sorter. They are numbered in the order in which they come,
// and live as long as the store.
class FecStore final : public Zam::PtrInterface {
 public:
   using Number = U32;

   explicit FecStore(FecSources sources) : sources_(std::move(sources)) {}
   std::string_view fwkType() const noexcept override { return "Kiv::FecStore"; }

   FecSources const& sources() const noexcept { return sources_; }
   FecSources& sources() noexcept { return sources_; }
   ViaArena const& arena() const noexcept { return arena_; }
   ViaArena& arena() noexcept { return arena_; }

   // An empty FEC, which find() does not tell of before numberIs().
   Number add(Vault::Fib::FecId fecId);
   void numberIs(Vault::Fib::FecId fecId, Number number) { numbers_.insertOrReplace(fecId, number); }
   Number const* find(Vault::Fib::FecId fecId) const { return numbers_.find(fecId); }
   void prefetch(Vault::Fib::FecId fecId) const { numbers_.prefetch(fecId); }
   // The FEC stays for those who hold it.
   bool erase(Vault::Fib::FecId fecId) { return numbers_.erase(fecId); }
   void clear() { numbers_.clear(); }
   Zam::HashMap<Vault::Fib::FecId, Number> const& numbers() const noexcept { return numbers_; }

   FecRecord const& record(Number number) const noexcept { return chunks_[number / chunkSize][number % chunkSize]; }
   FecRecord& record(Number number) noexcept { return chunks_[number / chunkSize][number % chunkSize]; }
   FecExtras& extras(FecRecord& record);
   FecExtras const& extras(FecRecord const& record) const noexcept {
      static FecExtras const none;
      return record.extras != nullptr ? *record.extras : none;
   }

   // In any order; of equal vias one is kept.
   void viasAre(FecRecord& record, std::span<StoredVia> vias);
   void viaIs(FecRecord& record, StoredVia const& via);
   // False when there was none.
   bool viaDel(FecRecord& record, StoredVia const& via);
   void viaDelAll(FecRecord& record);

   // What there is of a FEC, of this store or another one, becomes that of the FEC of that number.
   void copy(FecStore const& from, FecRecord const& other, Number to);

 private:
   // The first via that is not before this one.
   StoredVia* lowerBound(FecRecord const& record, StoredVia const& via) const;
   bool isAt(FecRecord const& record, StoredVia const* at, StoredVia const& via) const;
   bool isResolved(FecRecord const& record, StoredVia const& via) const;
   // Vias have moved; what was prepared for their places is no longer theirs.
   void changed(FecRecord& record);

   FecSources sources_;
   ViaArena arena_;
   static constexpr std::size_t chunkSize = 64;
   std::vector<std::unique_ptr<FecRecord[]>> chunks_;
   Number size_ = 0;
   Zam::HashMap<Vault::Fib::FecId, Number> numbers_;
   std::deque<FecExtras> extras_;
};

}  // namespace Kiv
