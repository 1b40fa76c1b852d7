#pragma once

#include "Vault/Extents.h"
#include "Vault/Fib.h"
#include "Vault/Records.h"
#include "Vault/TableEntity.h"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <vector>

// The FEC tables: each FEC with its vias, up to 600 of them, by its id.
namespace Vault {

// Reads a FEC table. A FEC and its vias are one consistent copy.
template <class Tag, template <TableRecord> class Core = Table>
class FecTable : public TableEntity<Core<Records::FecRecord<Tag>>> {
 public:
   using Fec = Fib::FecOf<Tag>;
   using Record = Records::FecRecord<Tag>;
   using TableEntity<Core<Record>>::TableEntity;

   U64 fecs() const { return this->core_.live(); }

   // Copies the FEC into `out`, whose memory is used again; false when there is none, and `out` is then unchanged.
   // RangeError for more vias than a FEC has; values of single vias are carried as they are. CorruptionError when the
   // index is broken, or a via that nobody could have written.
   bool fec(Fib::FecId fecId, Fec& out) const {
      Record record;
      Vias vias;
      if (!this->core_.find({fecId.value()}, record, [&](Record const& read) { copy(read, vias); })) {
         return false;
      }
      decode(record, vias, out);
      return true;
   }

   // Calls `visit(Fec const&)` for every FEC, until it returns false if it returns anything.
   template <class Visit>
   void walk(Visit&& visit) const {
      Vias vias;
      Fec fec;
      this->core_.walk([&](Record const& read) { copy(read, vias); },
                       [&](Record const& record) {
                          decode(record, vias, fec);
                          return visit(std::as_const(fec));
                       });
   }

 private:
   // Left as it is until it is copied into: a FEC has few vias, mostly.
   struct Vias {
      std::array<WordsOf<Records::ViaRecord>, Fib::maxVias> words;
      bool inArena;
   };

   // The record may be torn while this runs, so that nothing is said about it yet.
   void copy(Record const& record, Vias& vias) const noexcept {
      auto const* const from = this->core_.file().elementsAt(record.firstVia, record.viaCount);
      vias.inArena = from != nullptr;
      if (vias.inArena && record.viaCount <= Fib::maxVias) {
         copyWords(vias.words.front().data(), reinterpret_cast<U64 const*>(from),
                   record.viaCount * vias.words.front().size());
      }
   }

   void decode(Record const& record, Vias const& vias, Fec& out) const {
      if (record.viaCount != 0) {
         (void)Fib::ViaIndex(record.viaCount - 1U);
      }
      if (!vias.inArena) {
         this->core_.file().corrupted("vias out of place in FEC", record.key.fecId);
      }
      if (record.sum != record.sumWith(vias.words.data())) {
         this->core_.file().corrupted("damaged FEC", record.key.fecId);
      }
      out.fecId = Fib::FecId(record.key.fecId);
      out.primaryVias = record.primaryVias;
      out.vias.resize(record.viaCount);
      for (std::size_t i = 0; i < out.vias.size(); ++i) {
         if (!Records::toVia(std::bit_cast<Records::ViaRecord>(vias.words[i]), out.vias[i])) {
            this->core_.file().corrupted("impossible via in FEC", record.key.fecId);
         }
      }
   }
};

// Writes a FEC table, and reads it. A FEC that changes gets a new place for its vias before the old one is given back,
// so the moment in which it cannot be read is short whatever its size.
template <class Tag>
class FecTableWriter : public FecTable<Tag, TableWriter> {
 public:
   using Base = FecTable<Tag, TableWriter>;
   using typename Base::Fec;
   using typename Base::Record;

   explicit FecTableWriter(Place place) : Base(std::move(place)), extents_(this->core_.file().shape().arenaCapacity) {
      dropDamaged();
      placeVias();
   }
   // Without a size for the arena, one that does for many states and may grow.
   FecTableWriter(Place place, TableFile::Sizes sizes, When when = When::now)
       : Base(std::move(place), withArena(sizes), when),
         extents_(this->core_.file().shape().arenaCapacity) {}
   // What the arena must have so that these FECs, each of so many vias, fit without growing.
   static U32 arenaFor(std::span<U32 const> viaCounts) noexcept {
      U64 sum = 0;
      for (U32 const count : viaCounts) {
         sum += count == 0 ? 0 : Extents::sizeOf(count);
      }
      return static_cast<U32>(std::min(sum, U64{maxArenaCapacity}));
   }

   // Adds the FEC or replaces the one of its id. TableFull when there is no room for it or its vias; RangeError for
   // more than 600 vias or a zero id. The values of the vias are the caller's.
   void fecIs(Fec const& fec) {
      if (!fec.fecId) {
         throw Zam::RangeError("Vault::Fib::Fec::fecId == 0 not allowed");
      }
      auto const count = static_cast<U32>(fec.vias.size());
      Record record{{{fec.fecId.value()}, 0, 0, fec.primaryVias, 0}};
      if (count != 0) {
         record.viaCount = static_cast<U16>(Fib::ViaIndex(count - 1).value() + 1);
         record.firstVia = freeVias(count);
      }
      writeVias(record, fec.vias);
      Extents::Run const before = runOf(fec.fecId);
      try {
         this->core_.recordIs(record);
      } catch (TableFull const&) {
         giveBack({record.firstVia, count});
         throw;
      }
      giveBack(before);
   }

   // False when there was none.
   bool fecDel(Fib::FecId fecId) {
      Extents::Run const before = runOf(fecId);
      bool const found = this->core_.recordDel({fecId.value()});
      giveBack(before);
      return found;
   }

   // Entries that the writer before this one had left unfinished.
   U32 repaired() const noexcept { return this->core_.repaired(); }

 private:
   static constexpr U32 viasPerFec = 2;

   static TableFile::Sizes withArena(TableFile::Sizes sizes) noexcept {
      if (sizes.arenaCapacity == 0) {
         U64 const vias = std::max(U64{sizes.capacity} * viasPerFec, U64{Extents::maxCount});
         sizes.arenaCapacity = static_cast<U32>(std::min(vias, U64{maxArenaCapacity}));
      }
      return sizes;
   }

   Extents::Run runOf(Fib::FecId fecId) const {
      Record record;
      return this->core_.find({fecId.value()}, record) ? Extents::Run{record.firstVia, record.viaCount}
                                                       : Extents::Run{};
   }
   void giveBack(Extents::Run run) {
      if (run.count != 0) {
         extents_.giveBack(run);
      }
   }

   U32 freeVias(U32 count) {
      auto first = extents_.take(count);
      if (!first) {
         placeVias();
         first = extents_.take(count);
      }
      while (!first) {
         this->core_.growArena();
         extents_.capacityIs(this->core_.file().shape().arenaCapacity);
         first = extents_.take(count);
      }
      return *first;
   }

   void writeVias(Record& record, std::span<Fib::Via const> vias) {
      written_.clear();
      for (Fib::Via const& via : vias) {
         written_.push_back(std::bit_cast<WordsOf<Records::ViaRecord>>(Records::toRecord(via)));
      }
      record.sum = record.sumWith(written_.data());
      // Whoever still reads what was here before learns from its record that this is no longer its place.
      fence(std::memory_order_release);
      auto* to = this->core_.elementsAt(record.firstVia, record.viaCount);
      for (auto const& words : written_) {
         storeWords(to, words.data(), words.size());
         to += words.size();
      }
   }

   // What the writer before this one left whole and a fault has changed since.
   void dropDamaged() {
      std::vector<typename Record::Key> damaged;
      Fec fec;
      this->core_.walk([&](Record const& record) {
         try {
            (void)this->fec(Fib::FecId(record.key.fecId), fec);
         } catch (std::runtime_error const&) {
            damaged.push_back(record.key);
         }
      });
      for (auto const& key : damaged) {
         this->core_.recordDel(key);
      }
   }

   // Learns from the records which parts of the arena are in use. A FEC whose vias are where they cannot be goes.
   void placeVias() {
      std::vector<Record> records;
      this->core_.walk([&](Record const& record) {
         if (record.viaCount != 0) {
            records.push_back(record);
         }
      });
      std::ranges::sort(records, {}, &Record::firstVia);
      std::vector<Extents::Run> used;
      U64 end = 0;
      for (Record const& record : records) {
         U64 const newEnd = U64{record.firstVia} + Extents::sizeOf(record.viaCount);
         if (record.firstVia < end || newEnd > this->core_.file().shape().arenaCapacity) {
            this->core_.recordDel(record.key);
            continue;
         }
         used.push_back({record.firstVia, record.viaCount});
         end = newEnd;
      }
      extents_.reset(used);
   }

   Extents extents_;
   std::vector<WordsOf<Records::ViaRecord>> written_;
};

namespace Fib {

class KIV_EXPORT ForwardingStatus final : public FecTable<ForwardingStatus> {
 public:
   using FecTable::FecTable;
   std::string_view fwkType() const noexcept override { return "Vault::Fib::ForwardingStatus"; }
};

class KIV_EXPORT ForwardingStatusWriter final : public FecTableWriter<ForwardingStatus> {
 public:
   using FecTableWriter::FecTableWriter;
   std::string_view fwkType() const noexcept override { return "Vault::Fib::ForwardingStatusWriter"; }
};

}  // namespace Fib

namespace Fib6 {

class KIV_EXPORT ForwardingStatus final : public FecTable<ForwardingStatus> {
 public:
   using FecTable::FecTable;
   std::string_view fwkType() const noexcept override { return "Vault::Fib6::ForwardingStatus"; }
};

class KIV_EXPORT ForwardingStatusWriter final : public FecTableWriter<ForwardingStatus> {
 public:
   using FecTableWriter::FecTableWriter;
   std::string_view fwkType() const noexcept override { return "Vault::Fib6::ForwardingStatusWriter"; }
};

}  // namespace Fib6

namespace FibGen {

class KIV_EXPORT ForwardingStatus final : public FecTable<ForwardingStatus> {
 public:
   using FecTable::FecTable;
   std::string_view fwkType() const noexcept override { return "Vault::FibGen::ForwardingStatus"; }
};

class KIV_EXPORT ForwardingStatusWriter final : public FecTableWriter<ForwardingStatus> {
 public:
   using FecTableWriter::FecTableWriter;
   std::string_view fwkType() const noexcept override { return "Vault::FibGen::ForwardingStatusWriter"; }
};

}  // namespace FibGen

}  // namespace Vault
