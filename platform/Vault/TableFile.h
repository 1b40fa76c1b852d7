#pragma once

#include "Vault/Error.h"
#include "Vault/Layout.h"
#include "Zam/Export.h"
#include "Zam/Int.h"

#include <functional>
#include <string>
#include <string_view>

namespace Vault {

// A table file in memory: mapped, validated once, and from then on the only way to an address inside it. Opening raises
// MountError for a file that is not the table that was asked for. Sizes are taken from the file once, when it is
// opened; what a writer or a fault does to the header afterwards cannot lead outside the mapping.
//
// A file that is made shorter while it is mapped takes its pages away and ends whoever reads them (SIGBUS); so does a
// file system that is full for whoever writes. Tables are replaced by renaming, never by truncating.
//
// One thread at a time uses an object; any number of processes use the file.
class KIV_EXPORT TableFile {
 public:
   using CorruptionHook = std::function<void(std::string_view)>;
   struct Sizes {
      U32 capacity = 0;
      U32 arenaCapacity = 0;
   };

   static TableFile openReader(std::string path, RecordLayout const& layout);
   // The writer's own lock keeps a second writer out; readers neither take it nor wait for it.
   static TableFile openWriter(std::string path, RecordLayout const& layout);
   // Makes the file beside its place and renames it, so that it appears whole, in place of any earlier one.
   static TableFile create(std::string path, RecordLayout const& layout, Sizes sizes);

   TableFile(TableFile&& other) noexcept;
   TableFile& operator=(TableFile&&) = delete;
   ~TableFile();

   std::string const& path() const noexcept { return path_; }
   TableShape const& shape() const noexcept { return shape_; }
   // Whether some process has the table open for writing.
   bool hasWriter() const noexcept;

   // The checked way into the file: every index that came out of it goes through one of these.
   std::byte const* slotAt(U32 index) const { return at(index, shape_.capacity, slots_, shape_.slotSize, "slot"); }
   U32 const& bucketAt(U32 bucket) const noexcept { return buckets_[bucket & (shape_.bucketCount - 1)]; }
   // Null when the extent is not wholly inside the arena.
   std::byte const* elementsAt(U32 first, U32 count) const noexcept;
   TableHeader const& header() const noexcept { return *reinterpret_cast<TableHeader const*>(base_); }
   // For the writer, on its own mapping.
   TableHeader& header() noexcept { return *reinterpret_cast<TableHeader*>(base_); }

   // What readers do with damage that they can live with: it goes to the hook (by default a trace at level 0) and the
   // last one is remembered.
   void corruptionIs(std::string_view message) const;
   void corruptionHookIs(CorruptionHook hook) const { hook_ = std::move(hook); }
   std::string const& corruption() const noexcept { return corruption_; }
   U64 corruptions() const noexcept { return corruptions_; }
   [[noreturn]] void corrupted(std::string_view what, U64 value) const;

   // Waits for whoever is writing a cell to finish; false when it is time to give up. A live writer gets its time, a
   // dead one none, and a table on which waiting was in vain before gets little.
   class Wait {
    public:
      explicit Wait(TableFile const& file) noexcept : file_(file) {}
      bool again() noexcept;

    private:
      TableFile const& file_;
      U32 rounds_ = 0;
      bool writerGone_ = false;
   };
   // Entries that were given up because they did not come to rest.
   U64 vanished() const noexcept { return vanished_; }
   void vanishedInc() const noexcept;

 private:
   TableFile(std::string path, int fd, RecordLayout const& layout, bool writable);

   std::byte const* at(U32 index, U32 limit, std::byte const* part, U64 size, std::string_view what) const {
      if (index >= limit) [[unlikely]] {
         corrupted(what, index);
      }
      return part + index * size;
   }
   void validate(RecordLayout const& layout);
   void release() noexcept;
   [[noreturn]] void refuse(std::string const& why) const;

   std::string path_;
   int fd_ = -1;
   std::byte* base_ = nullptr;
   U64 bytes_ = 0;
   TableShape shape_;
   std::byte const* slots_ = nullptr;
   std::byte const* arena_ = nullptr;
   U32 const* buckets_ = nullptr;
   mutable CorruptionHook hook_;
   mutable std::string corruption_;
   mutable U64 corruptions_ = 0;
   mutable U64 vanished_ = 0;
   mutable U64 waitsInVain_ = 0;
};

}  // namespace Vault
