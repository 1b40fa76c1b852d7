#pragma once

#include "Lumen/IntfId.h"
#include "Lumen/Ip6Prefix.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/MplsLabel.h"
#include "Lumen/Prefix.h"
#include "Routing/RouteType.h"
#include "Vrf/VrfId.h"
#include "Zam/Error.h"
#include "Zam/Hash.h"
#include "Zam/Int.h"
#include "Zam/Strep.h"

#include <array>
#include <compare>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

// The records of the forwarding tables as their readers see them: plain values, copied out of shared memory. A value
// that another process wrote is checked where it is used: labels, weights and adjacency types are carried as they were
// read, and raise the runtime's range error when somebody asks for them.
namespace Vault::Fib {

// Names a forwarding equivalence class. The top 8 bits are the adjacency type, which says what made it and in which
// table it is; the low 56 bits are the id within that type. Zero names nothing.
class FecId {
 public:
   static constexpr U8 maxAdjType = 32;
   static constexpr int idBits = 56;
   static constexpr U64 idMask = (U64{1} << idBits) - 1;

   constexpr FecId() noexcept = default;
   explicit constexpr FecId(U64 value) noexcept : value_(value) {}
   // Raises the range error for an adjacency type above maxAdjType; id bits above idBits are dropped.
   static constexpr FecId of(U8 adjType, U64 id) {
      return FecId((U64{checkedAdjType(adjType)} << idBits) | (id & idMask));
   }

   constexpr U64 value() const noexcept { return value_; }
   constexpr U64 id() const noexcept { return value_ & idMask; }
   constexpr U8 adjType() const { return checkedAdjType(static_cast<U8>(value_ >> idBits)); }
   explicit constexpr operator bool() const noexcept { return value_ != 0; }

   constexpr auto operator<=>(FecId const&) const noexcept = default;

 private:
   static constexpr U8 checkedAdjType(U8 adjType) {
      if (adjType > maxAdjType) {
         throw Zam::RangeError("Vault::Fib::FecId::adjType > maxAdjType() not allowed");
      }
      return adjType;
   }

   U64 value_ = 0;
};

inline void strepAppend(std::string& out, FecId id) {
   Zam::strepAppendNumber(out, id.value());
}
inline void strepParse(Zam::StrepReader& in, FecId& id) {
   id = FecId(in.number());
}

// What a via does with a packet. A table may hold numbers beyond these; they are carried and stand for nothing.
enum class ForwardingAction : U8 {
   forward = 0,
   forwardVrf = 1,
   decap = 2,
   decapForwardVrf = 3,
};

constexpr auto zamEnumerators(ForwardingAction) {
   using enum ForwardingAction;
   return std::to_array<Zam::Enumerator<ForwardingAction>>(
       {{forward, "forward"}, {forwardVrf, "forwardVrf"}, {decap, "decap"}, {decapForwardVrf, "decapForwardVrf"}});
}
constexpr void zamReadFromTables(ForwardingAction) {}

// A label as a table holds it. It reads as a Lumen::MplsLabel, which raises the range error for a number beyond its
// range.
class ViaLabel {
 public:
   constexpr ViaLabel() = default;
   constexpr ViaLabel(Lumen::MplsLabel label) : raw_(label.value()) {}  // NOLINT(google-explicit-constructor)
   static constexpr ViaLabel fromRaw(U32 raw) {
      ViaLabel label;
      label.raw_ = raw;
      return label;
   }

   constexpr U32 raw() const noexcept { return raw_; }
   constexpr Lumen::MplsLabel label() const { return Lumen::MplsLabel(raw_); }
   constexpr operator Lumen::MplsLabel() const { return label(); }  // NOLINT(google-explicit-constructor)

   constexpr bool operator==(ViaLabel const&) const noexcept = default;

 private:
   U32 raw_ = Lumen::MplsLabel().value();
};

// A via's share of the traffic, at least 1. A table may hold 0; it raises the range error when it is read.
class ViaWeight {
 public:
   constexpr ViaWeight() noexcept = default;
   constexpr ViaWeight(U16 weight) : raw_(checked(weight)) {}  // NOLINT(google-explicit-constructor)
   static constexpr ViaWeight fromRaw(U16 raw) noexcept {
      ViaWeight weight;
      weight.raw_ = raw;
      return weight;
   }
   static constexpr U16 minWeight() noexcept { return 1; }

   constexpr U16 raw() const noexcept { return raw_; }
   constexpr operator U16() const { return checked(raw_); }  // NOLINT(google-explicit-constructor)

   // As raw values: comparing two records that were read must not raise.
   friend constexpr bool operator==(ViaWeight const& a, ViaWeight const& b) noexcept { return a.raw_ == b.raw_; }

 private:
   static constexpr U16 checked(U16 weight) {
      if (weight < minWeight()) {
         throw Zam::RangeError("Vault::Fib::Via::weight < minWeight() not allowed");
      }
      return weight;
   }

   U16 raw_ = minWeight();
};

// The position of a via in its FEC, 0 to 599.
class ViaIndex {
 public:
   static constexpr U16 min = 0;
   static constexpr U16 max = 599;

   constexpr ViaIndex() noexcept = default;
   explicit constexpr ViaIndex(U32 value) : value_(static_cast<U16>(value)) {
      if (value > max) {
         throw Zam::RangeError(
             "Vault::Fib::ViaIndex::value < Vault::Fib::ViaIndex::min or > Vault::Fib::ViaIndex::max not allowed");
      }
   }

   constexpr U16 value() const noexcept { return value_; }
   constexpr auto operator<=>(ViaIndex const&) const noexcept = default;

 private:
   U16 value_ = min;
};

inline constexpr U32 maxVias = ViaIndex::max + 1;

// One way out of a FEC.
struct Via {
   Lumen::IntfId intfId{};
   Lumen::IpGenAddr hop{};
   ViaLabel label{};
   ViaWeight weight{};
   ForwardingAction forwardingAction = ForwardingAction::forward;
   Vrf::VrfIdMap::VrfId forwardingVrf = Vrf::VrfIdMap::noVrf;
   U64 tunnelId = 0;
   FecId fecId{};

   bool operator==(Via const&) const = default;
};

// A forwarding equivalence class: its vias, of which the first `primaryVias` carry the traffic and the rest back them
// up. `Table` tells apart the records of the three tables that hold FECs; they have the same content.
template <class Table>
struct FecOf {
   FecId fecId{};
   U16 primaryVias = 0;
   std::vector<Via> vias{};

   bool operator==(FecOf const&) const = default;
};

class ForwardingStatus;
using Fec = FecOf<ForwardingStatus>;

// A route of the FIB. `srcVrfId` is the VRF it was leaked from, noVrf for the routes that were not.
struct Route {
   Lumen::Prefix prefix{};
   Routing::Fib::RouteType routeType{};
   U8 preference = 0;
   U32 metric = 0;
   Vrf::VrfIdMap::VrfId srcVrfId = Vrf::VrfIdMap::noVrf;
   FecId fecId{};

   bool operator==(Route const&) const = default;
};

}  // namespace Vault::Fib

namespace Vault::Fib6 {

using Fib::FecId;
using Fib::ForwardingAction;
using Fib::Via;

class ForwardingStatus;
using Fec = Fib::FecOf<ForwardingStatus>;

struct Route {
   Lumen::Ip6Prefix prefix{};
   Routing6::Fib::RouteType routeType{};
   U8 preference = 0;
   U32 metric = 0;
   Vrf::VrfIdMap::VrfId srcVrfId = Vrf::VrfIdMap::noVrf;
   FecId fecId{};

   bool operator==(Route const&) const = default;
};

}  // namespace Vault::Fib6

namespace Vault::FibGen {

using Fib::FecId;
using Fib::Via;

class ForwardingStatus;
using Fec = Fib::FecOf<ForwardingStatus>;

}  // namespace Vault::FibGen

template <>
struct std::hash<Vault::Fib::FecId> {
   // Mixes all eight bytes: ids are handed out in sequence and the types sit in the top byte.
   std::size_t operator()(Vault::Fib::FecId id) const noexcept { return Zam::mixedHash(id.value()); }
};
