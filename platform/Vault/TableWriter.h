#pragma once

#include "Vault/Table.h"

#include <vector>

namespace Vault {

// The writer's side of a table; there is one writer at a time, and it reads like everybody else.
//
// It may be stopped anywhere. A record is marked as being written for the few stores that it takes, so an end in the
// middle costs that record; the next writer takes it out when it opens the table, links what was not linked yet, counts
// again, and finds the free slots, which only a writer needs to know. Where it meets a broken chain, then or later, it
// rebuilds the index. Readers find the records that stay all through this.
template <TableRecord Record>
class TableWriter : public Table<Record> {
 public:
   using Base = Table<Record>;
   using typename Base::Key;
   using Sizes = TableFile::Sizes;

   // Opens the table that is there, or makes a new one in its place.
   explicit TableWriter(std::string path) : TableWriter(TableFile::openWriter(std::move(path), Base::layout)) {}
   TableWriter(std::string path, Sizes sizes) : TableWriter(TableFile::create(std::move(path), Base::layout, sizes)) {}

   // Adds the record or replaces the one of its key. TableFull when there is no slot left.
   void recordIs(Record const& record);
   // False when there was none.
   bool recordDel(Key const& key);
   // The words of an extent of the arena, which is wholly inside it.
   U64* elementsAt(U32 first, U32 count) noexcept {
      return reinterpret_cast<U64*>(const_cast<std::byte*>(file_.elementsAt(first, count)));
   }
   // Records that were taken out as unfinished or impossible when the table was opened.
   U32 repaired() const noexcept { return repaired_; }

 private:
   using Base::file_;
   using typename Base::SlotType;
   static constexpr U32 nowhere = ~U32{0};
   // Where a record is, and the link that leads there.
   struct Place {
      U32 index = nowhere;
      U32* link = nullptr;
      bool broken = false;
   };

   explicit TableWriter(TableFile file) : Base(std::move(file)) { repair(); }

   SlotType& slotAt(U32 index) { return const_cast<SlotType&>(Base::slotAt(index)); }
   U32& headOf(Key const& key) { return const_cast<U32&>(file_.bucketAt(Base::bucketOf(key))); }
   Record recordAt(U32 index);
   U32 freeSlot();
   Place follow(Key const& key);
   Place locate(Key const& key);
   void write(SlotType& slot, Record const& record, SlotState during);
   void link(U32 index, Key const& key);
   void liveIs(U32 live) { store(file_.header().live, live); }
   void rebuildIndex();
   void repair();
   bool isIndexSound();

   std::vector<U32> free_;
   U32 repaired_ = 0;
};

template <TableRecord Record>
Record TableWriter<Record>::recordAt(U32 index) {
   WordsOf<Record> copy;
   copyWords(copy.data(), slotAt(index).words.data(), copy.size());
   return std::bit_cast<Record>(copy);
}

template <TableRecord Record>
auto TableWriter<Record>::follow(Key const& key) -> Place {
   Place place{.link = &headOf(key)};
   U32 const end = this->highWater();
   for (U32 steps = 0; U32 const link = load(*place.link); ++steps) {
      place.index = link - 1;
      if (steps > end || place.index >= end || slotState(load(slotAt(place.index).sequence)) != SlotState::live) {
         return {.broken = true};
      }
      Key const met = recordAt(place.index).key;
      if (met == key) {
         return place;
      }
      if (Base::bucketOf(met) != Base::bucketOf(key)) {
         return {.broken = true};
      }
      place.link = &slotAt(place.index).next;
   }
   return {};
}

template <TableRecord Record>
auto TableWriter<Record>::locate(Key const& key) -> Place {
   Place place = follow(key);
   if (place.broken) [[unlikely]] {
      rebuildIndex();
      place = follow(key);
   }
   return place;
}

template <TableRecord Record>
U32 TableWriter<Record>::freeSlot() {
   if (!free_.empty()) {
      return free_.back();
   }
   U32 const next = this->highWater();
   if (next == file_.shape().capacity) {
      throw TableFull(file_.path() + ": " + std::string(Record::name) + " table is full, capacity " +
                      std::to_string(next));
   }
   return next;
}

template <TableRecord Record>
void TableWriter<Record>::write(SlotType& slot, Record const& record, SlotState during) {
   U32 const sequence = nextSequence(load(slot.sequence), during);
   store(slot.sequence, sequence);
   fence(std::memory_order_release);
   auto const copy = std::bit_cast<WordsOf<Record>>(record);
   storeWords(slot.words.data(), copy.data(), copy.size());
   store(slot.sequence, (sequence & ~3U) | static_cast<U32>(SlotState::live), std::memory_order_release);
}

template <TableRecord Record>
void TableWriter<Record>::link(U32 index, Key const& key) {
   store(headOf(key), index + 1, std::memory_order_release);
}

template <TableRecord Record>
void TableWriter<Record>::recordIs(Record const& record) {
   Place const place = locate(record.key);
   if (place.index != nowhere) {
      write(slotAt(place.index), record, SlotState::updating);
      return;
   }
   U32 const index = freeSlot();
   SlotType& slot = slotAt(index);
   store(slot.sequence, nextSequence(load(slot.sequence), SlotState::filling));
   fence(std::memory_order_release);
   store(slot.next, load(headOf(record.key)));
   write(slot, record, SlotState::filling);
   if (!free_.empty()) {
      free_.pop_back();
   } else {
      store(file_.header().highWater, index + 1, std::memory_order_release);
   }
   link(index, record.key);
   liveIs(this->live() + 1);
}

template <TableRecord Record>
bool TableWriter<Record>::recordDel(Key const& key) {
   Place const place = locate(key);
   if (place.index == nowhere) {
      return false;
   }
   free_.reserve(free_.size() + 1);
   SlotType& slot = slotAt(place.index);
   store(*place.link, load(slot.next), std::memory_order_release);
   store(slot.sequence, nextSequence(load(slot.sequence), SlotState::free), std::memory_order_release);
   free_.push_back(place.index);
   liveIs(this->live() - 1);
   return true;
}

template <TableRecord Record>
void TableWriter<Record>::rebuildIndex() {
   U32& structure = file_.header().structure;
   store(structure, load(structure) | 1U);
   fence(std::memory_order_release);
   for (U32 bucket = 0; bucket < file_.shape().bucketCount; ++bucket) {
      if (U32& head = const_cast<U32&>(file_.bucketAt(bucket)); load(head) != 0) {
         store(head, 0);
      }
   }
   U32 const end = this->highWater();
   for (U32 i = 0; i < end; ++i) {
      if (slotState(load(slotAt(i).sequence)) == SlotState::live) {
         Key const key = recordAt(i).key;
         store(slotAt(i).next, load(headOf(key)));
         link(i, key);
      }
   }
   store(structure, load(structure) + 1, std::memory_order_release);
}

template <TableRecord Record>
void TableWriter<Record>::repair() {
   U32 const end = this->highWater();
   store(file_.header().highWater, end, std::memory_order_release);
   bool sound = (load(file_.header().structure) & 1U) == 0;
   for (U32 i = 0; i < end; ++i) {
      U32& sequence = slotAt(i).sequence;
      SlotState const state = slotState(load(sequence));
      if (isBeingWritten(load(sequence)) || (state == SlotState::live && !recordAt(i).isPossible())) {
         store(sequence, nextSequence(load(sequence), SlotState::free), std::memory_order_release);
         ++repaired_;
         sound = false;
      }
   }
   if (!sound) {
      rebuildIndex();
   }
   while (!isIndexSound()) {
      rebuildIndex();
   }
}

// Whether every record is where its chain leads. Of two records of one key, the one that is not goes; the index is
// unsound then. Counts the records and collects the free slots on the way.
template <TableRecord Record>
bool TableWriter<Record>::isIndexSound() {
   bool sound = true;
   U32 live = 0;
   free_.clear();
   for (U32 i = this->highWater(); i-- > 0;) {
      U32& sequence = slotAt(i).sequence;
      Place const place = slotState(load(sequence)) == SlotState::live ? follow(recordAt(i).key) : Place();
      if (place.index != nowhere && place.index != i) {
         store(sequence, nextSequence(load(sequence), SlotState::free), std::memory_order_release);
         ++repaired_;
      }
      if (slotState(load(sequence)) == SlotState::live) {
         sound = sound && place.index == i;
         ++live;
      } else {
         sound = sound && place.index == nowhere;
         free_.push_back(i);
      }
   }
   liveIs(live);
   return sound;
}

}  // namespace Vault
