#pragma once

#include "Vault/Records.h"
#include "Vault/TableEntity.h"

#include <map>
#include <optional>

// What the listings of routes by VRF and prefix have in common: a number per route, and per VRF how many IPv4 and how
// many IPv6 routes are listed. A VRF's counts take a row of the table, as long as the VRF has a route in it.
namespace Vault {

using VrfId = Vrf::VrfIdMap::VrfId;

template <class Record, template <TableRecord> class Core = Table>
class VrfPrefixTable : public TableEntity<Core<Record>> {
 public:
   using TableEntity<Core<Record>>::TableEntity;

 protected:
   using Counts = std::array<U32, 2>;

   static std::size_t countAt(Lumen::AddressFamily family) noexcept {
      return family == Lumen::AddressFamily::ipv6 ? 1 : 0;
   }

   std::optional<U32> number(VrfId vrfId, Lumen::IpGenPrefix const& prefix) const {
      Record record;
      // The null prefix has no row; its key could be that of the counts.
      if (prefix.isNullPrefix() || !this->core_.find(Records::toKey(vrfId, prefix), record)) {
         return std::nullopt;
      }
      return record.values[0];
   }

   std::optional<Counts> counts(VrfId vrfId) const {
      Record record;
      if (!this->core_.find(Records::countsKey(vrfId), record)) {
         return std::nullopt;
      }
      return record.values;
   }

   // Calls `visit(vrfId, prefix, number)` for every listed route.
   template <class Visit>
   void walkRoutes(Visit&& visit) const {
      this->core_.walk([&](Record const& record) {
         if (!record.isPossible()) [[unlikely]] {
            this->core_.file().corrupted("impossible prefix in VRF", record.key.vrfId);
         }
         if (!record.isCounts()) {
            visit(record.key.vrfId, Records::toPrefix(record.key), record.values[0]);
         }
      });
   }
};

template <class Record>
class VrfPrefixTableWriter : public VrfPrefixTable<Record, TableWriter> {
   using Base = VrfPrefixTable<Record, TableWriter>;

 public:
   explicit VrfPrefixTableWriter(Place place) : Base(std::move(place)) { recount(); }
   VrfPrefixTableWriter(Place place, TableFile::Sizes sizes, When when = When::now)
       : Base(std::move(place), sizes, when) {}

   // Entries that the writer before this one had left unfinished.
   U32 repaired() const noexcept { return this->core_.repaired(); }

 protected:
   using typename Base::Counts;

   // Lists the route, or changes its number. Nothing changes when there is no room (TableFull).
   void numberIs(VrfId vrfId, Lumen::IpGenPrefix const& prefix, U32 number) {
      if (prefix.isNullPrefix()) {
         throw Zam::RangeError("Vault::UnprogrammedRoute::prefix == nullPrefix not allowed");
      }
      Record const record{{Records::toKey(vrfId, prefix), {number, 0}}};
      if (this->number(vrfId, prefix)) {
         this->core_.recordIs(record);
         return;
      }
      // Counted first: a route that is listed is never missing from the count.
      countInc(vrfId, prefix.family(), 1);
      try {
         this->core_.recordIs(record);
      } catch (TableFull const&) {
         countInc(vrfId, prefix.family(), ~U32{0});
         throw;
      }
   }

   bool numberDel(VrfId vrfId, Lumen::IpGenPrefix const& prefix) {
      if (prefix.isNullPrefix() || !this->core_.recordDel(Records::toKey(vrfId, prefix))) {
         return false;
      }
      countInc(vrfId, prefix.family(), ~U32{0});
      return true;
   }

 private:
   void countsAre(VrfId vrfId, Counts const& counts) {
      if (counts == Counts{}) {
         this->core_.recordDel(Records::countsKey(vrfId));
      } else {
         this->core_.recordIs({{Records::countsKey(vrfId), counts}});
      }
   }
   // All ones takes one away.
   void countInc(VrfId vrfId, Lumen::AddressFamily family, U32 by) {
      Counts counts = this->counts(vrfId).value_or(Counts{});
      counts[Base::countAt(family)] += by;
      countsAre(vrfId, counts);
   }

   // The writer before this one may have ended between a route and its count.
   void recount() {
      std::map<VrfId, Counts> counted;
      this->core_.walk([&](Record const& record) {
         auto& counts = counted[record.key.vrfId];
         if (!record.isCounts()) {
            ++counts[Base::countAt(static_cast<Lumen::AddressFamily>(record.key.family))];
         }
      });
      for (auto const& [vrfId, counts] : counted) {
         if (this->counts(vrfId).value_or(Counts{}) != counts || counts == Counts{}) {
            countsAre(vrfId, counts);
         }
      }
   }
};

}  // namespace Vault
