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
// the slot serves another chain by then, its key or its link says so, and the lookup starts again.
//
// What a walk or a lookup does is bounded by the table's size, whatever is damaged. A walk that nothing disturbed
// counts what it met; a chain that leads nowhere is asked once. What a lookup cannot see is a chain that ends too
// early.
template <TableRecord Record>
class Table {
 public:
   using Key = typename Record::Key;
   static constexpr RecordLayout layout = recordLayout<Record>();

   explicit Table(Place place) : Table(TableFile::openReader(std::move(place), layout)) {}

   TableFile const& file() const noexcept { return file_; }
   // As the writer counts; never more than there is room for, whatever stands there.
   U32 live() const {
      file_.catchUp(layout);
      return std::min(file_.number(&TableHeader::live, 1), file_.shape().capacity);
   }
   bool empty() const { return live() == 0; }

   // Copies the record of `key`; false when there is none. `extra(record)` is called to copy what else belongs to the
   // record, and may be called again when the record changed meanwhile. Raises CorruptionError when the chain is
   // broken; who asks for it again finds nothing, at once.
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
      return static_cast<U32>(hashKey(key, file_.seed())) & (file_.shape().bucketCount - 1);
   }
   SlotType const& slotAt(U32 index) const { return *reinterpret_cast<SlotType const*>(file_.slotAt(index)); }
   U32 highWater() const;

   TableFile file_;

 private:
   enum class ChainEnd : U8 { found, absent, strayed };
   // Keys scatter, so no table has a chain of this length.
   static constexpr U32 maxChain = 128;
   // What one lookup does at most: slots looked at, and a few for each new start.
   static constexpr U32 maxSteps = 2048;
   static constexpr U32 stepsOfAStart = 16;

   template <class Extra>
   SlotState read(SlotType const& slot, Record& out, U32& next, Extra&& extra) const;
   template <class Extra>
   ChainEnd follow(Key const& key, U32 bucket, U32& steps, Record& out, Extra&& extra) const;
   bool isIndexWhole() const;
   template <class Extra>
   bool scan(Key const& key, Record& out, Extra&& extra) const;
   U32 population() const { return file_.number(&TableHeader::population, 1, std::memory_order_acquire); }
   void countIs(U32 met, U32 populationBefore) const;
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
auto Table<Record>::follow(Key const& key, U32 bucket, U32& steps, Record& out, Extra&& extra) const -> ChainEnd {
   U32 link = load(file_.bucketAt(bucket), std::memory_order_acquire);
   for (U32 const end = steps + maxChain; link != 0; ++steps) {
      U32 const index = linkedSlot(link);
      if (link != linkTo(index, bucket) || index >= file_.shape().capacity || steps == end) [[unlikely]] {
         return ChainEnd::strayed;
      }
      U32 next = 0;
      SlotState const state = read(slotAt(index), out, next, [&](Record const& record) {
         if (record.key == key) {
            extra(record);
         }
      });
      if (out.key == key && state == SlotState::live) {
         return ChainEnd::found;
      }
      if (out.key == key && state == SlotState::updating) {
         file_.vanishedInc();
         return ChainEnd::absent;
      }
      if (out.key == key && state == SlotState::free) {
         return ChainEnd::strayed;  // unlinked first, it is not met again
      }
      if (state == SlotState::filling || bucketOf(out.key) != bucket) {
         return ChainEnd::strayed;
      }
      link = next;
   }
   return ChainEnd::absent;
}

// Waits for a writer that rebuilds the index; false when it was left in pieces.
template <TableRecord Record>
bool Table<Record>::isIndexWhole() const {
   TableFile::Wait wait(file_);
   while ((file_.number(&TableHeader::structure, 0, std::memory_order_acquire) & 1U) != 0) {
      if (!wait.again()) {
         file_.reportOnce(TableFile::Fault::index);
         return false;
      }
   }
   return true;
}

// The index was left in pieces: what is in the table is in the slots all the same. They are searched as often as takes
// no time worth mentioning.
template <TableRecord Record>
template <class Extra>
bool Table<Record>::scan(Key const& key, Record& out, Extra&& extra) const {
   U32 const end = highWater();
   if (!file_.mayScan(end)) {
      return false;
   }
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
   file_.catchUp(layout);
   U32 const bucket = bucketOf(key);
   if (file_.isGivenUp(bucket)) [[unlikely]] {
      return false;
   }
   U32 steps = 0;
   for (; steps < maxSteps; steps += stepsOfAStart) {
      U64 const structure = load(file_.header().structure, std::memory_order_acquire);
      ChainEnd const end = follow(key, bucket, steps, out, extra);
      file_.checkWhole();
      if (end == ChainEnd::found) {
         return true;
      }
      fence(std::memory_order_acquire);
      if (!Twice::agree(structure) || (Twice::number(structure) & 1U) != 0) [[unlikely]] {
         if (!isIndexWhole()) {
            return scan(key, out, extra);
         }
      }
      if (end == ChainEnd::absent && load(file_.header().structure) == structure) {
         return false;
      }
   }
   file_.giveUp(bucket, steps);
   file_.corrupted("damaged chain of bucket", bucket);
}

// How far slots are in use; all of them when that is damaged.
template <TableRecord Record>
U32 Table<Record>::highWater() const {
   U32 const capacity = file_.shape().capacity;
   U32 const highWater = file_.number(&TableHeader::highWater, capacity, std::memory_order_acquire);
   if (highWater > capacity) [[unlikely]] {
      file_.corruptionIs(file_.path() + ": high-water mark " + std::to_string(highWater) + " exceeds the capacity");
   }
   return std::min(highWater, capacity);
}

// Of a walk to the end: when nothing came or went meanwhile, it met what the writer counts.
template <TableRecord Record>
void Table<Record>::countIs(U32 met, U32 populationBefore) const {
   if (file_.isTorn()) {
      file_.reportOnce(TableFile::Fault::torn);
      return;
   }
   U32 const counted = file_.number(&TableHeader::live, met);
   fence(std::memory_order_acquire);
   if (population() != populationBefore) {
      return;
   }
   if ((populationBefore & 1U) != 0 && !file_.hasWriter()) {
      file_.corruptionIs(file_.path() + ": a change was left unfinished");
   } else if ((populationBefore & 1U) == 0 && counted != met) {
      file_.corruptionIs(file_.path() + ": has " + std::to_string(met) + " of " + std::to_string(counted) + " entries");
   }
}

template <TableRecord Record>
template <class Extra, class Visit>
void Table<Record>::walk(Extra&& extra, Visit&& visit) const {
   file_.catchUp(layout);
   U32 const populationBefore = population();
   U32 const end = highWater();
   U32 met = 0;
   for (U32 i = 0; i < end; ++i) {
      try {
         Record record;
         U32 next = 0;
         SlotState const state = read(slotAt(i), record, next, extra);
         if (state != SlotState::live) {
            if (state == SlotState::updating) {
               file_.vanishedInc();
               ++met;
            }
            continue;
         }
         ++met;
         file_.checkWhole();
         if constexpr (std::is_void_v<std::invoke_result_t<Visit&, Record const&>>) {
            visit(std::as_const(record));
         } else if (!visit(std::as_const(record))) {
            return;
         }
      } catch (CorruptionError const& error) {
         if (file_.isTorn()) {
            break;
         }
         file_.corruptionIs(error.what());
      }
   }
   countIs(met, populationBefore);
}

}  // namespace Vault
