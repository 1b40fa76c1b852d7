#pragma once

#include "Vault/TableFile.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace Vault {

// The reader's side of a table of `Record`s. It takes no locks and writes nothing, and trusts nothing that it reads.
//
// A record is copied word by word between two looks at its slot's sequence, so it is one that was written as a whole.
// Records do not move: a walk sees each record that stays exactly once, whatever else comes and goes.
//
// A lookup follows its bucket's chain. New records go to the head of a chain and a slot keeps its link and its key when
// its record goes, so whoever stands on a slot that is taken away still finds every record that stays behind it. When
// the slot serves another chain by then, its key says so, and the lookup starts again.
template <TableRecord Record>
class Table {
 public:
   using Key = typename Record::Key;
   static constexpr RecordLayout layout = recordLayout<Record>();

   explicit Table(std::string path) : Table(TableFile::openReader(std::move(path), layout)) {}

   TableFile const& file() const noexcept { return file_; }
   // As the writer counts; never more than there is room for, whatever stands there.
   U32 live() const noexcept { return std::min(load(file_.header().live), file_.shape().capacity); }
   bool empty() const noexcept { return live() == 0; }

   // Copies the record of `key`; false when there is none. `extra(record)` is called to copy what else belongs to the
   // record, and may be called again when the record changed meanwhile. Raises CorruptionError when the chain is
   // broken.
   template <class Extra>
   bool find(Key const& key, Record& out, Extra&& extra) const;
   bool find(Key const& key, Record& out) const {
      return find(key, out, [](Record const&) {});
   }

   // Calls `visit(record)` for every record in slot order, until one call returns false (when it returns anything).
   // Damage that is met, in here or by `visit`, goes to the corruption hook and costs only the record at hand.
   template <class Visit>
   void walk(Visit&& visit) const {
      walk([](Record const&) {}, visit);
   }
   template <class Extra, class Visit>
   void walk(Extra&& extra, Visit&& visit) const;

 protected:
   explicit Table(TableFile file) : file_(std::move(file)) {}

   using SlotType = Slot<Record>;
   static constexpr std::size_t words = sizeof(Record) / sizeof(U64);

   U32 bucketOf(Key const& key) const noexcept {
      return static_cast<U32>(hashKey(key)) & (file_.shape().bucketCount - 1);
   }
   SlotType const& slotAt(U32 index) const { return *reinterpret_cast<SlotType const*>(file_.slotAt(index)); }
   U32 highWater() const;

   TableFile file_;

 private:
   enum class ChainEnd : U8 { found, absent, strayed, endless };
   static constexpr U32 maxRestarts = 1000;

   template <class Extra>
   SlotState read(SlotType const& slot, Record& out, U32& next, Extra&& extra) const;
   template <class Extra>
   ChainEnd follow(Key const& key, Record& out, Extra&& extra) const;
   template <class Extra>
   bool scan(Key const& key, Record& out, Extra&& extra) const;
};

// What the slot holds, with a copy of its record (a free slot's last one) and its link. `updating` and `filling` are
// what is left when the writer did not finish in good time: then the key and link of `updating` hold, and nothing else.
template <TableRecord Record>
template <class Extra>
SlotState Table<Record>::read(SlotType const& slot, Record& out, U32& next, Extra&& extra) const {
   TableFile::Wait wait(file_);
   while (true) {
      U32 const before = load(slot.sequence, std::memory_order_acquire);
      WordsOf<Record> copy;
      copyWords(copy.data(), slot.words.data(), words);
      out = std::bit_cast<Record>(copy);
      next = load(slot.next);
      if (slotState(before) == SlotState::live) {
         extra(std::as_const(out));
      }
      fence(std::memory_order_acquire);
      if (load(slot.sequence) == before && !isBeingWritten(before)) [[likely]] {
         return slotState(before);
      }
      // A record that is not yet in the table is not worth waiting for.
      if (slotState(before) == SlotState::filling || !wait.again()) {
         return slotState(before) == SlotState::updating ? SlotState::updating : SlotState::filling;
      }
   }
}

template <TableRecord Record>
template <class Extra>
auto Table<Record>::follow(Key const& key, Record& out, Extra&& extra) const -> ChainEnd {
   U32 const bucket = bucketOf(key);
   U32 link = load(file_.bucketAt(bucket), std::memory_order_acquire);
   for (U32 steps = 0; link != 0; ++steps) {
      if (steps > file_.shape().capacity) {
         return ChainEnd::endless;
      }
      U32 next = 0;
      SlotState const state = read(slotAt(link - 1), out, next, [&](Record const& record) {
         if (record.key == key) {
            extra(record);
         }
      });
      if (out.key == key && state != SlotState::free) {
         if (state == SlotState::live) {
            return ChainEnd::found;
         }
         file_.vanishedInc();
         return state == SlotState::updating ? ChainEnd::absent : ChainEnd::strayed;
      }
      if (state == SlotState::filling || bucketOf(out.key) != bucket) {
         return ChainEnd::strayed;
      }
      link = next;
   }
   return ChainEnd::absent;
}

// The index is being rebuilt, or its rebuilding was cut short: what is in the table is in the slots all the same.
template <TableRecord Record>
template <class Extra>
bool Table<Record>::scan(Key const& key, Record& out, Extra&& extra) const {
   U32 const end = highWater();
   for (U32 i = 0; i < end; ++i) {
      U32 next = 0;
      if (read(slotAt(i), out, next,
               [&](Record const& record) {
                  if (record.key == key) {
                     extra(record);
                  }
               }) == SlotState::live &&
          out.key == key) {
         return true;
      }
   }
   return false;
}

template <TableRecord Record>
template <class Extra>
bool Table<Record>::find(Key const& key, Record& out, Extra&& extra) const {
   for (U32 restarts = 0; restarts < maxRestarts; ++restarts) {
      U32 const structure = load(file_.header().structure, std::memory_order_acquire);
      ChainEnd const end = follow(key, out, extra);
      if (end == ChainEnd::found) {
         return true;
      }
      fence(std::memory_order_acquire);
      if ((structure & 1U) != 0 || load(file_.header().structure) != structure) [[unlikely]] {
         return scan(key, out, extra);
      }
      if (end == ChainEnd::absent) {
         return false;
      }
      if (end == ChainEnd::endless) {
         file_.corrupted("endless chain of bucket", bucketOf(key));
      }
   }
   file_.corrupted("mixed chain of bucket", bucketOf(key));
}

template <TableRecord Record>
U32 Table<Record>::highWater() const {
   U32 const highWater = load(file_.header().highWater, std::memory_order_acquire);
   if (highWater > file_.shape().capacity) [[unlikely]] {
      file_.corruptionIs("high-water mark " + std::to_string(highWater) + " exceeds the capacity");
   }
   return std::min(highWater, file_.shape().capacity);
}

template <TableRecord Record>
template <class Extra, class Visit>
void Table<Record>::walk(Extra&& extra, Visit&& visit) const {
   U32 const end = highWater();
   for (U32 i = 0; i < end; ++i) {
      try {
         Record record;
         U32 next = 0;
         SlotState const state = read(slotAt(i), record, next, extra);
         if (state != SlotState::live) {
            if (state == SlotState::updating) {
               file_.vanishedInc();
            }
            continue;
         }
         if constexpr (std::is_void_v<std::invoke_result_t<Visit&, Record const&>>) {
            visit(std::as_const(record));
         } else if (!visit(std::as_const(record))) {
            return;
         }
      } catch (CorruptionError const& error) {
         file_.corruptionIs(error.what());
      }
   }
}

}  // namespace Vault
