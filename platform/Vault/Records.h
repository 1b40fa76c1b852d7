#pragma once

#include "Lumen/IpGenPrefix.h"
#include "Vault/Fib.h"
#include "Vault/Layout.h"
#include "Zam/Export.h"

#include <optional>

// The records as they lie in shared memory: numbers of fixed width without padding. They may hold anything; what can be
// read of them as a value is decided where they are turned into one.
namespace Vault::Records {

struct PrefixKey4 {
   U32 address;
   U8 length;
   std::array<U8, 3> zero;

   bool operator==(PrefixKey4 const&) const noexcept = default;
};

struct PrefixKey6 {
   U64 high;
   U64 low;
   U64 length;

   bool operator==(PrefixKey6 const&) const noexcept = default;
};

constexpr PrefixKey4 toKey(Lumen::Prefix const& prefix) noexcept {
   return {prefix.address().value(), prefix.length(), {}};
}
constexpr PrefixKey6 toKey(Lumen::Ip6Prefix const& prefix) noexcept {
   return {prefix.address().hi(), prefix.address().lo(), prefix.length()};
}

// Whether the bytes are those of some prefix, the null prefix left out.
constexpr bool isPrefix(PrefixKey4 const& key) noexcept {
   return key.length <= Lumen::Prefix::maxLength && (key.address & ~Lumen::IpAddr::mask(key.length).value()) == 0 &&
          key.zero == std::array<U8, 3>{};
}
constexpr bool isPrefix(PrefixKey6 const& key) noexcept {
   return key.length <= Lumen::Ip6Prefix::maxLength &&
          (Lumen::Ip6Addr(key.high, key.low) & ~Lumen::Ip6Addr::mask(static_cast<U8>(key.length))).isZero();
}

inline Lumen::Prefix toPrefix(PrefixKey4 const& key) {
   return Lumen::Prefix(Lumen::IpAddr(key.address), key.length);
}
inline Lumen::Ip6Prefix toPrefix(PrefixKey6 const& key) {
   return Lumen::Ip6Prefix(Lumen::Ip6Addr(key.high, key.low), static_cast<U8>(key.length));
}

// The sum is over the rest of the record.
template <class KeyType>
struct RouteRecord {
   using Key = KeyType;
   using Element = void;

   Key key;
   U64 fecId;
   U32 metric;
   U32 srcVrfId;
   U8 routeType;
   U8 preference;
   std::array<U8, 6> sum;

   // The six upper bytes of the sum stand above type and preference in the last word. The words are laid over each
   // other and multiplied once, so that each bit that changes, changes it.
   U64 sealed() const noexcept {
      static_assert(std::endian::native == std::endian::little);
      auto const words = std::bit_cast<WordsOf<RouteRecord>>(*this);
      U64 const rest = words.back() & 0xffffU;
      U64 overlaid = rest;
      for (std::size_t i = 0; i + 1 < words.size(); ++i) {
         overlaid ^= std::rotl(words[i], static_cast<int>(11 * i + 5));
      }
      return (overlaid * sumFactor & ~U64{0xffff}) | rest;
   }
   bool isPossible() const noexcept { return isPrefix(key); }
   // What a walk does not check, whose time it would double.
   bool isWhole() const noexcept { return std::bit_cast<WordsOf<RouteRecord>>(*this).back() == sealed(); }
};

struct RouteRecord4 : RouteRecord<PrefixKey4> {
   static constexpr std::string_view name = "Vault::Fib::Route";
   static constexpr std::string_view fields =
       "address:U32 length:U8 zero:U24 fecId:U64 metric:U32 srcVrfId:U32 routeType:U8 preference:U8 sum:U48";
};

struct RouteRecord6 : RouteRecord<PrefixKey6> {
   static constexpr std::string_view name = "Vault::Fib6::Route";
   static constexpr std::string_view fields =
       "high:U64 low:U64 length:U64 fecId:U64 metric:U32 srcVrfId:U32 routeType:U8 preference:U8 sum:U48";
};

static_assert(TableRecord<RouteRecord4> && sizeof(RouteRecord4) == 32);
static_assert(TableRecord<RouteRecord6> && sizeof(RouteRecord6) == 48);

// Route and record have the same members in both families; the prefix must be one (isPossible, isNullPrefix).
template <class Route, class Record>
Route toRoute(Record const& record) {
   return {.prefix = toPrefix(record.key),
           .routeType = static_cast<decltype(Route::routeType)>(record.routeType),
           .preference = record.preference,
           .metric = record.metric,
           .srcVrfId = record.srcVrfId,
           .fecId = Fib::FecId(record.fecId)};
}

template <class Record, class Route>
Record toRecord(Route const& route) noexcept {
   Record record{{.key = toKey(route.prefix),
                  .fecId = route.fecId.value(),
                  .metric = route.metric,
                  .srcVrfId = route.srcVrfId,
                  .routeType = static_cast<U8>(route.routeType),
                  .preference = route.preference,
                  .sum = {}}};
   auto words = std::bit_cast<WordsOf<Record>>(record);
   words.back() = record.sealed();
   return std::bit_cast<Record>(words);
}

// A via, an element of the arena of a FEC table.
struct ViaRecord {
   U64 tunnelId;
   U64 fecId;
   std::array<U64, 2> hop;
   std::array<U64, 3> intfId;
   U32 label;
   U32 forwardingVrf;
   U16 weight;
   U8 forwardingAction;
   U8 hopFamily;
   U32 zero;
};
static_assert(sizeof(ViaRecord) == 72 && std::has_unique_object_representations_v<ViaRecord>);
static_assert(sizeof(Lumen::IntfId) == sizeof(ViaRecord::intfId));

struct FecKey {
   U64 fecId;

   bool operator==(FecKey const&) const noexcept = default;
};

// A FEC: its vias are `viaCount` elements of the arena from `firstVia` on. They belong to the record; whoever changes
// them changes its sequence. The sum is over all of it, its vias included.
struct FecRecordBase {
   using Key = FecKey;
   using Element = ViaRecord;
   static constexpr std::string_view fields =
       "fecId:U64 firstVia:U32 viaCount:U16 primaryVias:U16 sum:U64 vias(tunnelId:U64 fecId:U64 hop:U64x2 intfId:U8x24 "
       "label:U32 "
       "forwardingVrf:U32 weight:U16 forwardingAction:U8 hopFamily:U8 zero:U32)";

   Key key;
   U32 firstVia;
   U16 viaCount;
   U16 primaryVias;
   U64 sum;

   U64 sumWith(WordsOf<ViaRecord> const* vias) const noexcept {
      FecRecordBase unsummed = *this;
      unsummed.sum = 0;
      return viaCount == 0 ? sumOf(unsummed) : sumWords(vias->data(), viaCount * vias->size(), sumOf(unsummed));
   }
   bool isPossible() const noexcept { return key.fecId != 0 && viaCount <= Fib::maxVias; }
};

// The three FEC tables hold the same records under names of their own.
template <class Table>
struct FecRecord;

template <>
struct FecRecord<Fib::ForwardingStatus> : FecRecordBase {
   static constexpr std::string_view name = "Vault::Fib::Fec";
};
template <>
struct FecRecord<Fib6::ForwardingStatus> : FecRecordBase {
   static constexpr std::string_view name = "Vault::Fib6::Fec";
};
template <>
struct FecRecord<FibGen::ForwardingStatus> : FecRecordBase {
   static constexpr std::string_view name = "Vault::FibGen::Fec";
};
static_assert(TableRecord<FecRecord<Fib::ForwardingStatus>> && sizeof(FecRecordBase) == 24);

KIV_EXPORT ViaRecord toRecord(Fib::Via const& via) noexcept;
// Label, weight and FEC id are carried as they are. False when the interface or the family of the hop is none that
// exists.
KIV_EXPORT bool toVia(ViaRecord const& record, Fib::Via& via);

// A row of the tables that are kept by VRF and prefix: about one prefix, or, with the family `unknown`, the counts of
// its VRF.
struct VrfPrefixKey {
   std::array<U64, 2> address;
   U32 vrfId;
   U8 family;
   U8 length;
   U16 zero;

   bool operator==(VrfPrefixKey const&) const noexcept = default;
};

struct VrfPrefixRecordBase {
   using Key = VrfPrefixKey;
   using Element = void;
   static constexpr std::string_view fields =
       "address:U64x2 vrfId:U32 family:U8 length:U8 zero:U16 values:U32x2 (family 0: count ipv4, count ipv6; else: "
       "code)";

   Key key;
   std::array<U32, 2> values;

   bool isCounts() const noexcept { return key.family == static_cast<U8>(Lumen::AddressFamily::unknown); }
   KIV_EXPORT bool isPossible() const noexcept;
};

struct UnprogrammedRecord : VrfPrefixRecordBase {
   static constexpr std::string_view name = "Vault::Fib::UnprogrammedRouteStatus";
};
struct KernelUnprogrammedRecord : VrfPrefixRecordBase {
   static constexpr std::string_view name = "Vault::KernelUnprogrammedRoute::UnprogrammedRoute";
};
static_assert(TableRecord<UnprogrammedRecord> && sizeof(UnprogrammedRecord) == 32);

KIV_EXPORT VrfPrefixKey toKey(Vrf::VrfIdMap::VrfId vrfId, Lumen::IpGenPrefix const& prefix) noexcept;
constexpr VrfPrefixKey countsKey(Vrf::VrfIdMap::VrfId vrfId) noexcept {
   return {.address = {}, .vrfId = vrfId, .family = 0, .length = 0, .zero = 0};
}
// The prefix of a row that is possible and holds no counts.
KIV_EXPORT Lumen::IpGenPrefix toPrefix(VrfPrefixKey const& key);

}  // namespace Vault::Records
