#pragma once

#include "Zam/Int.h"

#include <array>
#include <atomic>
#include <bit>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

// The layout of a table file, shared by the one process that writes it and the many that read it:
//
//    header | bucket heads | slots | arena          each part begins on a page of its own
//
// Everything is an index, never a pointer. The file has its full size from the start, and the memory for it: whoever
// reads or writes it later needs none. A slot holds one record, and its place never changes while the record is in the
// table. A table that is full is succeeded by a larger file in its place, in which every record has the slot that it
// had.
namespace Vault {

inline constexpr U64 tableMagic = 0x656c626154746c56;  // "VltTable"
inline constexpr U32 layoutVersion = 2;
inline constexpr U32 maxCapacity = U32{1} << 27;
inline constexpr U32 maxArenaCapacity = U32{1} << 30;
inline constexpr U64 pageSize = 4096;

// Which table a file is: the load that made its state, and the number of its path in it. Zeros are any table.
struct TableId {
   U64 load = 0;
   U64 table = 0;

   bool operator==(TableId const&) const = default;
};

// A number that writers change all the while, twice in one word, so that a reader sees when it is damaged.
class Twice {
 public:
   static constexpr U64 of(U32 number) noexcept { return U64{number} << 32U | static_cast<U32>(~number); }
   static constexpr bool agree(U64 word) noexcept { return (word >> 32U) == static_cast<U32>(~word); }
   static constexpr U32 number(U64 word) noexcept { return static_cast<U32>(word >> 32U); }
};

struct TableHeader {
   // Written once. The magic goes in last, so that a file without it was never finished. The sum is over all of it but
   // the magic. The seed scatters keys; the generation counts the files that the table has had.
   U64 magic;
   U32 version;
   U32 recordSize;
   U64 recordHash;
   U32 capacity;
   U32 bucketCount;
   U32 arenaCapacity;
   U32 elementSize;
   TableId id;
   U64 seed;
   U64 generation;
   U64 sum;
   std::array<U64, 6> reserved;
   // Written all the while, each twice: slots that were ever used; records that are in the table now; the sequence of
   // the index as a whole, which is odd while a writer rebuilds it; the sequence of what is in the table, odd while a
   // record comes or goes; and whether another file takes, or has taken, this one's place.
   U64 highWater;
   U64 live;
   U64 structure;
   U64 population;
   U64 succeeded;
   std::array<U64, 3> reserved2;
};
static_assert(sizeof(TableHeader) == 192 && offsetof(TableHeader, highWater) == 128);
static_assert(std::has_unique_object_representations_v<TableHeader>);

// A slot's sequence: the two low bits say what the slot is, the others count its changes. A reader that saw the same
// even sequence before and after it copied a record has a record that was written as a whole. Odd is "being written":
// `filling` for a new record, whose key and link mean nothing yet, `updating` for one whose key and link stay.
enum class SlotState : U8 { free = 0, filling = 1, live = 2, updating = 3 };

constexpr SlotState slotState(U32 sequence) noexcept {
   return static_cast<SlotState>(sequence & 3U);
}
constexpr bool isBeingWritten(U32 sequence) noexcept {
   return (sequence & 1U) != 0;
}
constexpr U32 nextSequence(U32 sequence, SlotState state) noexcept {
   return ((sequence & ~3U) + 4U) | static_cast<U32>(state);
}

// What can be a record: whole words without padding that begin with the key, a name and a list of fields. An Element
// is what the record's extents in the arena hold, void for records that have none. isPossible() is false for bytes that
// no writer leaves behind.
template <class R>
concept TableRecord =
    std::is_trivially_copyable_v<R> && std::has_unique_object_representations_v<R> && sizeof(R) % sizeof(U64) == 0 &&
    sizeof(typename R::Key) % sizeof(U64) == 0 && std::same_as<decltype(R::key), typename R::Key>&& requires {
   { R::name } -> std::convertible_to<std::string_view>;
   { R::fields } -> std::convertible_to<std::string_view>;
   { std::declval<R const&>().isPossible() } -> std::same_as<bool>;
   typename R::Element;
};

template <class T>
using WordsOf = std::array<U64, sizeof(T) / sizeof(U64)>;

template <TableRecord Record>
struct Slot {
   U32 sequence;
   U32 next;
   WordsOf<Record> words;
};

// What a reader asks of a file: the description of the records, and their sizes.
struct RecordLayout {
   std::string_view name;
   U64 hash;
   U32 recordSize;
   U32 slotSize;
   U32 elementSize;
};

constexpr U64 hashText(std::string_view text, U64 hash = 0xcbf29ce484222325) noexcept {
   for (char const c : text) {
      hash = (hash ^ static_cast<U8>(c)) * 0x100000001b3;
   }
   return hash;
}

template <class T>
constexpr U32 sizeOrNone() noexcept {
   if constexpr (std::is_void_v<T>) {
      return 0;
   } else {
      static_assert(sizeof(T) % sizeof(U64) == 0);
      return sizeof(T);
   }
}

template <TableRecord Record>
constexpr RecordLayout recordLayout() noexcept {
   static_assert(offsetof(Record, key) == 0);
   static_assert(sizeof(Slot<Record>) == sizeof(U64) + sizeof(Record));
   return {Record::name, hashText(Record::fields, hashText(Record::name)), sizeof(Record), sizeof(Slot<Record>),
           sizeOrNone<typename Record::Element>()};
}

// The sizes of one file, and where its parts begin.
struct TableShape {
   U32 capacity = 0;
   U32 bucketCount = 0;
   U32 arenaCapacity = 0;
   U32 slotSize = 0;
   U32 elementSize = 0;

   static constexpr U64 paged(U64 bytes) noexcept { return (bytes + pageSize - 1) / pageSize * pageSize; }
   constexpr U64 bucketOffset() const noexcept { return paged(sizeof(TableHeader)); }
   constexpr U64 slotOffset() const noexcept { return bucketOffset() + paged(U64{bucketCount} * sizeof(U32)); }
   constexpr U64 arenaOffset() const noexcept { return slotOffset() + paged(U64{capacity} * slotSize); }
   constexpr U64 fileSize() const noexcept { return arenaOffset() + paged(U64{arenaCapacity} * elementSize); }
};

// Cells of shared memory are only touched through these.
static_assert(std::atomic_ref<U64>::is_always_lock_free && std::atomic_ref<U32>::is_always_lock_free);
static_assert(std::atomic_ref<U64>::required_alignment == alignof(U64));

template <class T>
T load(T const& cell, std::memory_order order = std::memory_order_relaxed) noexcept {
   // atomic_ref has no form for const objects yet; a load does not write, so a read-only page will do.
   return std::atomic_ref<T>(const_cast<T&>(cell)).load(order);
}

template <class T>
void store(T& cell, std::type_identity_t<T> value, std::memory_order order = std::memory_order_relaxed) noexcept {
   std::atomic_ref<T>(cell).store(value, order);
}

inline void copyWords(U64* to, U64 const* from, std::size_t words) noexcept {
   for (std::size_t i = 0; i < words; ++i) {
      to[i] = load(from[i]);
   }
}

inline void storeWords(U64* to, U64 const* from, std::size_t words) noexcept {
   for (std::size_t i = 0; i < words; ++i) {
      store(to[i], from[i]);
   }
}

#if defined(__SANITIZE_THREAD__)
// The thread sanitizer knows no fences; every access that they order is atomic, so it has nothing to complain about.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wtsan"
#endif
inline void fence(std::memory_order order) noexcept {
   std::atomic_thread_fence(order);
}
#if defined(__SANITIZE_THREAD__)
#pragma GCC diagnostic pop
#endif

// Mixes the words of a key; the low bits choose the bucket. A part of the layout: writer and readers must agree on it.
template <class Key>
constexpr U64 hashKey(Key const& key, U64 seed) noexcept {
   U64 hash = seed;
   for (U64 const word : std::bit_cast<WordsOf<Key>>(key)) {
      hash = (hash ^ word) * 0xd6e8feb86659fd93;
      hash = (hash ^ (hash >> 32)) * 0xd6e8feb86659fd93;
      hash ^= hash >> 32;
   }
   return hash;
}

// A link leads to a slot of the table, in the chain of a bucket. Zero ends the chain, and so does untouched memory. It
// is the slot's number, counted from one, below a check that every flipped bit breaks, as does the chain of nearly
// every other bucket.
constexpr U32 linkTo(U32 slot, U32 bucket) noexcept {
   U32 check = (slot + 1) ^ bucket;
   check ^= check >> 16U;
   check ^= check >> 8U;
   check ^= check >> 4U;
   return (slot + 1) | check << 28U;
}
constexpr U32 linkedSlot(U32 link) noexcept {
   return (link & ~(15U << 28U)) - 1;
}

// A checksum of what no reader can measure otherwise. Any one bit that changes, changes it; a writer that means harm
// can make it.
inline constexpr U64 sumFactor = 0xd6e8feb86659fd93;
constexpr U64 sumWords(U64 const* words, std::size_t count, U64 sum = 0) noexcept {
   for (std::size_t i = 0; i < count; ++i) {
      sum = std::rotl(sum, 5) + words[i] * sumFactor;
   }
   return sum;
}
// What is kept of a sum where there is no room for all of it: either half shows every bit that changed.
constexpr U64 foldedSum(U64 sum) noexcept {
   return sum ^ std::rotl(sum, 32);
}
template <class T>
constexpr U64 sumOf(T const& value, U64 sum = 0) noexcept {
   auto const words = std::bit_cast<WordsOf<T>>(value);
   return sumWords(words.data(), words.size(), sum);
}

}  // namespace Vault
