#pragma once

#include "Vault/Table.h"

#include <cstring>
#include <vector>

namespace Vault {

// The writer's side of a table; there is one writer at a time, and it reads like everybody else.
//
// It may be stopped anywhere. A record is marked as being written for the few stores that it takes, so an end in the
// middle costs that record; the next writer takes it out when it opens the table, links what was not linked yet, counts
// again, and finds the free slots, which only a writer needs to know. Where it meets a broken chain, then or later, it
// rebuilds the index. Readers find the records that stay all through this.
//
// A table that is full is succeeded by one of twice the size: the writer fills it beside its place, with every record
// where it was, marks the old one and puts the new one in its place. Readers go over with their next call; a walk that
// is under way goes on over the same slots.
template <TableRecord Record>
class TableWriter : public Table<Record> {
 public:
   using Base = Table<Record>;
   using typename Base::Key;
   using Sizes = TableFile::Sizes;

   // Opens the table that is there, or makes a new one in its place.
   explicit TableWriter(Place place) : TableWriter(TableFile::openWriter(std::move(place), Base::layout)) {}
   TableWriter(Place place, Sizes sizes, When when = When::now)
       : TableWriter(TableFile::create(std::move(place), Base::layout, sizes, when)) {
      if (when == When::now) {
         putInPlace();
      }
   }
   // Of a new table that was to wait.
   void putInPlace() { file_.putInPlace(); }

   // Whether the table may grow, which it may until it is told otherwise.
   void growingIs(bool growing) noexcept { growing_ = growing; }
   // Adds the record or replaces the one of its key. TableFull when there is no slot left and it cannot grow.
   void recordIs(Record const& record);
   // False when there was none.
   bool recordDel(Key const& key);
   // The words of an extent of the arena, which is wholly inside it.
   U64* elementsAt(U32 first, U32 count) noexcept {
      return reinterpret_cast<U64*>(const_cast<std::byte*>(file_.elementsAt(first, count)));
   }
   // Makes the arena twice as large, or as much as it may be; TableFull when it cannot grow.
   void growArena();
   // Records that were taken out as unfinished or impossible when the table was opened.
   U32 repaired() const noexcept { return repaired_; }

 private:
   using Base::file_;
   using typename Base::SlotType;
   static constexpr U32 nowhere = ~U32{0};
   // Where a record is, and the link that leads there.
   struct Position {
      U32 index = nowhere;
      U32* link = nullptr;
      bool broken = false;
   };

   explicit TableWriter(TableFile file) : Base(std::move(file)) { repair(); }

   SlotType& slotAt(U32 index) { return const_cast<SlotType&>(Base::slotAt(index)); }
   U32& headOf(U32 bucket) { return const_cast<U32&>(file_.bucketAt(bucket)); }
   Record recordAt(U32 index);
   U32 freeSlot();
   Position follow(Key const& key);
   Position locate(Key const& key);
   void write(SlotType& slot, Record const& record, SlotState during);
   void liveIs(U32 live) { file_.numberIs(&TableHeader::live, live); }
   void highWaterIs(U32 end) { file_.numberIs(&TableHeader::highWater, end, std::memory_order_release); }
   // While one lives, records come or go.
   class Change {
    public:
      explicit Change(TableFile& file) : file_(file), before_(file.number(&TableHeader::population, 0) & ~1U) {
         file_.numberIs(&TableHeader::population, before_ + 1);
         fence(std::memory_order_release);
      }
      Change(Change const&) = delete;
      Change& operator=(Change const&) = delete;
      ~Change() { file_.numberIs(&TableHeader::population, before_ + 2, std::memory_order_release); }

    private:
      TableFile& file_;
      U32 before_;
   };
   void linkAll();
   void rebuildIndex();
   void grow(Sizes sizes);
   void succeed(TableFile& next);
   void copyTo(TableFile& next);
   [[noreturn]] void full(std::string const& why) const;
   void repair();
   bool isIndexSound();

   std::vector<U32> free_;
   U32 repaired_ = 0;
   bool growing_ = true;
};

template <TableRecord Record>
Record TableWriter<Record>::recordAt(U32 index) {
   WordsOf<Record> copy;
   copyWords(copy.data(), slotAt(index).words.data(), copy.size());
   return std::bit_cast<Record>(copy);
}

template <TableRecord Record>
auto TableWriter<Record>::follow(Key const& key) -> Position {
   U32 const bucket = Base::bucketOf(key);
   Position place{.link = &headOf(bucket)};
   U32 const end = this->highWater();
   for (U32 steps = 0; U32 const link = load(*place.link); ++steps) {
      place.index = linkedSlot(link);
      if (steps > end || place.index >= end || link != linkTo(place.index, bucket) ||
          slotState(load(slotAt(place.index).sequence)) != SlotState::live) {
         return {.broken = true};
      }
      Key const met = recordAt(place.index).key;
      if (met == key) {
         return place;
      }
      if (Base::bucketOf(met) != bucket) {
         return {.broken = true};
      }
      place.link = &slotAt(place.index).next;
   }
   return {};
}

template <TableRecord Record>
auto TableWriter<Record>::locate(Key const& key) -> Position {
   Position place = follow(key);
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
   TableShape const& shape = file_.shape();
   if (this->highWater() == shape.capacity) {
      grow({static_cast<U32>(std::min(U64{shape.capacity} * 2, U64{maxCapacity})), shape.arenaCapacity});
   }
   return this->highWater();
}

template <TableRecord Record>
void TableWriter<Record>::growArena() {
   TableShape const& shape = file_.shape();
   grow({shape.capacity, static_cast<U32>(std::min(U64{shape.arenaCapacity} * 2 + 1024, U64{maxArenaCapacity}))});
}

template <TableRecord Record>
void TableWriter<Record>::full(std::string const& why) const {
   throw TableFull(file_.path() + ": " + std::string(Record::name) + " table is full, " + why);
}

template <TableRecord Record>
void TableWriter<Record>::grow(Sizes sizes) {
   TableShape const& shape = file_.shape();
   if (!growing_ || (sizes.capacity == shape.capacity && sizes.arenaCapacity == shape.arenaCapacity)) {
      full("capacity " + std::to_string(shape.capacity) +
           (shape.arenaCapacity != 0 ? ", room for " + std::to_string(shape.arenaCapacity) + " vias" : ""));
   }
   try {
      TableFile next = file_.successor(Base::layout, sizes);
      copyTo(next);
      succeed(next);
   } catch (MountError const& error) {
      full(error.what());
   }
}

// All that it holds but the index, which depends on the size.
template <TableRecord Record>
void TableWriter<Record>::copyTo(TableFile& next) {
   auto const bytes = U64{this->highWater()} * sizeof(SlotType);
   std::memcpy(const_cast<std::byte*>(next.slotAt(0)), file_.slotAt(0), bytes);
   U32 const elements = file_.shape().arenaCapacity;
   std::memcpy(const_cast<std::byte*>(next.elementsAt(0, elements)), file_.elementsAt(0, elements),
               U64{elements} * file_.shape().elementSize);
   for (U64 TableHeader::*which : {&TableHeader::highWater, &TableHeader::live, &TableHeader::population}) {
      store(next.header().*which, load(file_.header().*which));
   }
}

template <TableRecord Record>
void TableWriter<Record>::succeed(TableFile& next) {
   file_.exchange(next);
   linkAll();
   next.numberIs(&TableHeader::succeeded, 1, std::memory_order_release);
   try {
      file_.putInPlace();
   } catch (MountError const&) {
      file_.exchange(next);
      file_.numberIs(&TableHeader::succeeded, 0, std::memory_order_release);
      throw;
   }
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
void TableWriter<Record>::recordIs(Record const& record) {
   Position const place = locate(record.key);
   file_.checkWhole();
   if (place.index != nowhere) {
      write(slotAt(place.index), record, SlotState::updating);
      return;
   }
   U32 const index = freeSlot();
   U32 const bucket = Base::bucketOf(record.key);
   Change const change(file_);
   SlotType& slot = slotAt(index);
   store(slot.sequence, nextSequence(load(slot.sequence), SlotState::filling));
   fence(std::memory_order_release);
   store(slot.next, load(headOf(bucket)));
   write(slot, record, SlotState::filling);
   if (!free_.empty()) {
      free_.pop_back();
   } else {
      highWaterIs(index + 1);
   }
   store(headOf(bucket), linkTo(index, bucket), std::memory_order_release);
   liveIs(this->live() + 1);
}

template <TableRecord Record>
bool TableWriter<Record>::recordDel(Key const& key) {
   Position const place = locate(key);
   file_.checkWhole();
   if (place.index == nowhere) {
      return false;
   }
   free_.push_back(place.index);
   Change const change(file_);
   SlotType& slot = slotAt(place.index);
   store(*place.link, load(slot.next), std::memory_order_release);
   store(slot.sequence, nextSequence(load(slot.sequence), SlotState::free), std::memory_order_release);
   liveIs(this->live() - 1);
   return true;
}

template <TableRecord Record>
void TableWriter<Record>::linkAll() {
   U32 const end = this->highWater();
   for (U32 i = 0; i < end; ++i) {
      if (slotState(load(slotAt(i).sequence)) == SlotState::live) {
         U32 const bucket = Base::bucketOf(recordAt(i).key);
         store(slotAt(i).next, load(headOf(bucket)));
         store(headOf(bucket), linkTo(i, bucket), std::memory_order_release);
      }
   }
}

template <TableRecord Record>
void TableWriter<Record>::rebuildIndex() {
   U32 const sequence = file_.number(&TableHeader::structure, 0) | 1U;
   file_.numberIs(&TableHeader::structure, sequence);
   fence(std::memory_order_release);
   for (U32 bucket = 0; bucket < file_.shape().bucketCount; ++bucket) {
      if (U32& head = headOf(bucket); load(head) != 0) {
         store(head, 0);
      }
   }
   linkAll();
   file_.numberIs(&TableHeader::structure, sequence + 1, std::memory_order_release);
}

template <TableRecord Record>
void TableWriter<Record>::repair() {
   Change const change(file_);
   U32 const end = this->highWater();
   highWaterIs(end);
   if (file_.number(&TableHeader::succeeded, 1) != 0) {
      file_.removeLeft();
      file_.numberIs(&TableHeader::succeeded, 0, std::memory_order_release);
   }
   bool sound = Twice::agree(load(file_.header().structure)) && (file_.number(&TableHeader::structure, 0) & 1U) == 0;
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
      Position const place = slotState(load(sequence)) == SlotState::live ? follow(recordAt(i).key) : Position();
      if (place.index != nowhere && place.index != i) {
         store(sequence, nextSequence(load(sequence), SlotState::free), std::memory_order_release);
         ++repaired_;
      }
      if (slotState(load(sequence)) == SlotState::live) {
         sound = sound && place.index == i;
         ++live;
      } else {
         sound = sound && place.index == nowhere && !follow(recordAt(i).key).broken;
         free_.push_back(i);
      }
   }
   liveIs(live);
   return sound;
}

}  // namespace Vault
