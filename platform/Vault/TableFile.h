#pragma once

#include "Vault/Error.h"
#include "Vault/GuardedMapping.h"
#include "Vault/Layout.h"
#include "Zam/Export.h"
#include "Zam/Int.h"
#include "Zam/NewFile.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Vault {

// Where a table is: below an open directory or at a path of the process, and which table belongs there. One of another
// number or load is refused; zeros are any.
struct Place {
   Place(std::string file) : name(std::move(file)), path(name) {}  // NOLINT(google-explicit-constructor): a path is one
   Place(char const* file) : Place(std::string(file)) {}           // NOLINT(google-explicit-constructor): as above
   Place(std::shared_ptr<Zam::Directory const> directory, std::string below, std::string shown, TableId which)
       : dir(std::move(directory)),
         name(std::move(below)),
         path(std::move(shown)),
         id(which) {}

   KIV_EXPORT int dirFd() const noexcept;

   std::shared_ptr<Zam::Directory const> dir;
   std::string name;
   std::string path;
   TableId id{};
};

// When a new table gets to its place: at once, or when its writer is told to.
enum class When : U8 { now, later };

// A table file in memory: mapped, validated once, and from then on the only way to an address inside it. Opening raises
// MountError for a file that is not the table that was asked for. Sizes are taken from the file once, when it is
// opened; what a writer or a fault does to the header afterwards cannot lead outside the mapping. The file is closed
// again when it is mapped.
//
// A file that is made shorter while it is mapped reads as zeros from there on and says so (GuardedMapping, torn()).
// Tables are replaced by renaming, never by truncating.
//
// One thread at a time uses an object; any number of processes use the file.
class KIV_EXPORT TableFile {
 public:
   using CorruptionHook = std::function<void(std::string_view)>;
   struct Sizes {
      U32 capacity = 0;
      U32 arenaCapacity = 0;
   };

   static TableFile openReader(Place place, RecordLayout const& layout);
   // The writer's own lock keeps a second writer out; readers neither take it nor wait for it.
   static TableFile openWriter(Place place, RecordLayout const& layout);
   // A new file, written by nobody else, which gets to its place when it is told to. Its memory is there, all of it.
   // One that is for now is refused when the table in its place has a writer; for later, the caller sees to that.
   static TableFile create(Place place, RecordLayout const& layout, Sizes sizes, When when);
   // The same for one that takes over from this.
   TableFile successor(RecordLayout const& layout, Sizes sizes) const;
   // In place of any earlier one.
   void putInPlace();
   // Removes what writers of this table left beside it when they were killed on the way to its place.
   void removeLeft() const { Zam::removeLeftFiles(place_.dirFd(), place_.name); }
   // Each becomes the other's file.
   void exchange(TableFile& other) noexcept;

   TableFile(TableFile&& other) noexcept;
   TableFile& operator=(TableFile&&) = delete;
   ~TableFile();

   std::string const& path() const noexcept { return place_.path; }
   TableShape const& shape() const noexcept { return view_.shape; }
   TableId id() const noexcept { return view_.id; }
   U64 seed() const noexcept { return view_.seed; }
   // Whether some process has the table open for writing.
   bool hasWriter() const noexcept;

   // The checked way into the file: every index that came out of it goes through one of these.
   std::byte const* slotAt(U32 index) const {
      return at(index, view_.shape.capacity, view_.slots, view_.shape.slotSize, "slot");
   }
   U32 const& bucketAt(U32 bucket) const noexcept { return view_.buckets[bucket & (view_.shape.bucketCount - 1)]; }
   // Null when the extent is not wholly inside the arena.
   std::byte const* elementsAt(U32 first, U32 count) const noexcept;
   TableHeader const& header() const noexcept { return *reinterpret_cast<TableHeader const*>(view_.mapping.base()); }
   // For the writer, on its own mapping.
   TableHeader& header() noexcept { return *reinterpret_cast<TableHeader*>(view_.mapping.base()); }
   // One of the header's changing numbers. One that is damaged is reported, once, and is `otherwise`.
   U32 number(U64 TableHeader::*which, U32 otherwise, std::memory_order order = std::memory_order_relaxed) const {
      U64 const word = load(header().*which, order);
      if (!Twice::agree(word)) [[unlikely]] {
         reportOnce(Fault::numbers);
         return otherwise;
      }
      return Twice::number(word);
   }
   void numberIs(U64 TableHeader::*which, U32 number, std::memory_order order = std::memory_order_relaxed) noexcept {
      store(header().*which, Twice::of(number), order);
   }

   // For a reader: goes over to the file that has taken this one's place, if one has.
   void catchUp(RecordLayout const& layout) const {
      if (Twice::number(load(header().succeeded, std::memory_order_acquire)) != 0 && !isLast_) [[unlikely]] {
         goOver(layout);
      }
   }

   // What readers do with damage that they can live with: it goes to the hook (by default to the process's reporter, or
   // a trace at level 0) and the last one is remembered.
   void corruptionIs(std::string_view message) const;
   void corruptionHookIs(CorruptionHook hook) const { hook_ = std::move(hook); }
   std::string const& corruption() const noexcept { return corruption_; }
   U64 corruptions() const noexcept { return corruptions_; }
   [[noreturn]] void corrupted(std::string_view what, U64 value) const;
   [[noreturn]] void corrupted(std::string_view what) const;
   // Whether pages of the file were missing; raises CorruptionError when they were.
   bool isTorn() const noexcept { return view_.mapping.torn(); }
   void checkWhole() const {
      if (isTorn()) [[unlikely]] {
         corrupted(textOf(Fault::torn));
      }
   }

   // Damage of the whole table, which is met again and again and reported once.
   enum class Fault : U8 { numbers, index, torn };
   static std::string_view textOf(Fault fault) noexcept;
   void reportOnce(Fault fault) const;

   // Chains that were found damaged are asked no more, and after a thousand of them none is.
   bool isGivenUp(U32 bucket) const noexcept;
   void giveUp(U32 bucket, U32 steps) const;
   // Whether one more search through that many slots is within what a reader does for an index in pieces.
   bool mayScan(U32 slots) const noexcept;

   // Waits for whoever is writing a cell to finish; false when it is time to give up. A live writer gets its time, a
   // dead one none, and a table on which waiting was in vain gets little until a wait has an end again.
   class KIV_EXPORT Wait {
    public:
      explicit Wait(TableFile const& file) noexcept : file_(file) {}
      Wait(Wait const&) = delete;
      Wait& operator=(Wait const&) = delete;
      ~Wait() {
         if (rounds_ != 0) [[unlikely]] {
            ended();
         }
      }
      bool again() noexcept;

    private:
      void ended() const noexcept;

      TableFile const& file_;
      U32 rounds_ = 0;
      bool writerGone_ = false;
      bool inVain_ = false;
   };
   // For the whole process, set before tables are used: waits end early when `interrupted` says so, and damage of
   // tables without a hook goes to `reporter`.
   static void interruptedIs(bool (*interrupted)() noexcept) noexcept;
   static void damageReporterIs(void (*reporter)(std::string_view message)) noexcept;
   // Entries that were given up because they did not come to rest.
   U64 vanished() const noexcept { return vanished_; }
   // What damage has cost so far: slots that were looked at for nothing, and rounds of waiting.
   U64 stepsInVain() const noexcept { return stepsInVain_; }
   void vanishedInc() const;

 private:
   TableFile(Place place, int fd, RecordLayout const& layout, bool writable);
   static TableFile made(Place place, RecordLayout const& layout, Sizes sizes, TableHeader header);

   std::byte const* at(U32 index, U32 limit, std::byte const* part, U64 size, std::string_view what) const {
      if (index >= limit) [[unlikely]] {
         corrupted(what, index);
      }
      return part + index * size;
   }
   void goOver(RecordLayout const& layout) const;
   void validate(RecordLayout const& layout);
   void validateShape(TableShape const& shape);
   bool isThis(int fd) const noexcept;
   [[noreturn]] void refuse(std::string const& why) const;

   // Which file it is, and what it looks like. A reader may go over to another one.
   struct View {
      U64 device = 0;
      U64 inode = 0;
      GuardedMapping mapping;
      TableShape shape;
      TableId id;
      U64 seed = 0;
      U64 generation = 0;
      std::byte const* slots = nullptr;
      std::byte const* arena = nullptr;
      U32 const* buckets = nullptr;
   };

   Place place_;
   std::unique_ptr<Zam::NewFile> unplaced_;
   mutable View view_;
   mutable bool isLast_ = false;
   // What the reader has met.
   mutable CorruptionHook hook_;
   mutable std::string corruption_;
   mutable U64 corruptions_ = 0;
   mutable U64 vanished_ = 0;
   mutable U64 waitsInVain_ = 0;
   mutable U64 scanned_ = 0;
   mutable U64 stepsInVain_ = 0;
   mutable U8 reported_ = 0;  // one bit a fault
   mutable std::vector<U32> givenUp_;
};

}  // namespace Vault
