#pragma once

#include "Kiv/fecs/CachedFec.h"
#include "Zam/HashMap.h"

#include <span>
#include <vector>

namespace Kiv {

// A sorter's FECs, each copied out of the shared tables once, with everything that its vias point at; and those that it
// made up.
class KIV_EXPORT FecCache {
 public:
   using FecId = Vault::Fib::FecId;

   explicit FecCache(FecSources sources) : store_(Zam::makePtr<FecStore>(std::move(sources))) {}

   FecStore const& store() const noexcept { return *store_; }
   FecStore& store() noexcept { return *store_; }
   Zam::Ptr<FecStore> const& storePtr() const noexcept { return store_; }

   // Makes sure that the FEC and every FEC below it are here, and gives it; null for a zero id, which does nothing. The
   // hierarchy is walked with an explicit stack: its depth costs no call stack, and a cycle ends because what is here
   // is skipped.
   FecRecord* copyAdjacency(FecId fecId);
   // An id that no table uses and no later FEC of this process gets.
   FecId unusedFecId() const;
   // A FEC of these vias under such an id, and what it resolves through.
   FecRecord& makeUp(std::span<Vault::Fib::Via const> vias);

   // Null for a FEC that is not here.
   FecRecord* record(FecId fecId) {
      auto const* const number = store_->find(fecId);
      return number != nullptr ? &store_->record(*number) : nullptr;
   }
   FecRecord const* record(FecId fecId) const { return const_cast<FecCache*>(this)->record(fecId); }
   std::size_t size() const noexcept { return store_->numbers().size(); }
   // Calls `visit(FecRecord const&)` for every FEC, in no order.
   template <class Visit>
   void forEach(Visit&& visit) const {
      for (auto const& [fecId, number] : store_->numbers()) {
         visit(store().record(number));
      }
   }

   // The FEC as scripts hold it, the same for the same id; null for one that is not here.
   Zam::Ptr<CachedFec> fec(FecId fecId) const;
   // The same for a moment, as filters see it.
   Zam::Ptr<CachedFec> handle(FecRecord const& record) const;
   bool fecHas(FecId fecId) const { return store_->find(fecId) != nullptr; }
   void fecIs(Zam::Ptr<CachedFec> const& fec);
   // A new FEC, like that one but for its id; null for one that is not here.
   Zam::Ptr<CachedFec> fecCopy(FecId fecId);
   bool fecDel(FecId fecId);
   void fecDelAll();

   // Some FEC that was copied is of IPv6 among IPv4 routes, or has such a next hop.
   bool hasV6Nexthop() const noexcept { return hasV6Nexthop_; }

 private:
   using Pending = std::vector<FecId>;

   FecRecord& cachedFecIs(FecId fecId, U16 primaryVias, std::span<Vault::Fib::Via const> vias, Pending& pending);
   void copyFec(FecId fecId, Pending& pending);
   template <class Table, class Fec>
   void copyFrom(Zam::Ptr<Table const> const& table, FecId fecId, Fec& scratch, Pending& pending);
   void copyAll(Pending& pending);
   void copyVias(FecRecord& record, std::span<Vault::Fib::Via const> vias, Pending& pending);
   StoredVia storedVia(Vault::Fib::Via const& via, U16 index, FecRecord const& record, bool unequalCost);
   U32 legOf(Vault::Fib::Via const& via, bool isForwardingVrfAction);
   void copyVxlan(FecRecord& record, Vault::Fib::Via const& via, StoredVia const& stored);
   void copyEvpnVias(FecRecord& record);
   void copyPolicies(FecRecord& record, Pending& pending);
   std::vector<PolicyVia> policyVias(FecId fecId, Pending& pending);
   void follow(Lumen::IntfId const& intfId, Pending& pending);
   bool isGeneric() const noexcept { return store_->sources().forwardingGenStatus != nullptr; }

   Zam::Ptr<FecStore> store_;
   mutable Zam::HashMap<FecId, Zam::Ptr<CachedFec>> handles_;
   Zam::HashMap<Tunnel::TunnelId, bool> followed_;
   Zam::HashMap<Lumen::IntfId, U32> legs_;  // of vias that show as the interface that they leave through
   bool hasV6Nexthop_ = false;
   // What is read into, used again.
   Vault::Fib::Fec fec_;
   Vault::Fib6::Fec fec6_;
   Vault::FibGen::Fec fecGen_;
   std::vector<StoredVia> vias_;
};

}  // namespace Kiv
