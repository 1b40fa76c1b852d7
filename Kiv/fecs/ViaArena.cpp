#include "Kiv/fecs/ViaArena.h"

#include "Zam/Error.h"

#include <algorithm>
#include <limits>

namespace Kiv {

Lumen::IpGenAddr StoredVia::hop() const noexcept {
   switch (static_cast<Lumen::AddressFamily>(hopFamily)) {
      case Lumen::AddressFamily::ipv4:
         return Lumen::IpAddr(static_cast<U32>(hopHi));
      case Lumen::AddressFamily::ipv6:
         return Lumen::Ip6Addr(hopHi, hopLo);
      case Lumen::AddressFamily::unknown:
         break;
   }
   return {};
}

void StoredVia::hopIs(Lumen::IpGenAddr const& hop) noexcept {
   bool const isIpv4 = hop.family() == Lumen::AddressFamily::ipv4;
   hopFamily = static_cast<U8>(hop.family()) & 0x3fU;
   hopHi = isIpv4 ? hop.ip().value() : hop.ip6().hi();
   hopLo = hop.ip6().lo();
}

ViaArena::ViaArena() {
   weightIs({});
}

U32 ViaArena::legIs(ViaLeg const& leg) {
   if (auto const* const known = legNumbers_.find(leg); known != nullptr) {
      return *known;
   }
   auto const number = static_cast<U32>(legs_.size());
   legs_.push_back(leg);
   return legNumbers_.insertOrReplace(leg, number);
}

U16 ViaArena::weightIs(Zam::String const& weight) {
   if (auto const* const known = weightNumbers_.find(weight); known != nullptr) {
      return *known;
   }
   if (weights_.size() > std::numeric_limits<U16>::max()) {
      throw Zam::RangeError("Kiv::CachedVia::viaWeight: too many different texts");
   }
   auto const number = static_cast<U16>(weights_.size());
   weights_.push_back(weight);
   return weightNumbers_.insertOrReplace(weight, number);
}

StoredVia ViaArena::stored(CachedVia const& via, bool value) {
   StoredVia stored{.leg = legIs({via.intfId, via.vrfId, via.vrfName}),
                    .label = via.viaLabel.value(),
                    .weight = weightIs(via.viaWeight),
                    .viaIndex = via.viaIndex,
                    .forwardingAction = via.forwardingAction,
                    .isBackup = via.isBackup,
                    .value = value};
   stored.hopIs(via.hop);
   return stored;
}

CachedVia ViaArena::cached(StoredVia const& via) const {
   auto const& through = leg(via);
   CachedVia cached;
   cached.hop = via.hop();
   cached.intfId = through.intfId;
   cached.vrfId = through.vrfId;
   cached.vrfName = through.vrfName;
   cached.isBackup = via.isBackup != 0;
   cached.viaLabel = Lumen::MplsLabel(via.label);
   cached.viaWeight = weight(via);
   cached.viaIndex = via.viaIndex;
   cached.forwardingAction = via.forwardingAction;
   return cached;
}

std::strong_ordering ViaArena::compare(StoredVia const& a, StoredVia const& b) const noexcept {
   auto const& legA = leg(a);
   auto const& legB = leg(b);
   if (auto const order = a.isBackup <=> b.isBackup; order != 0) {
      return order;
   }
   if (auto const order = a.leg == b.leg ? std::strong_ordering::equal : legA.intfId <=> legB.intfId; order != 0) {
      return order;
   }
   auto const key = [](StoredVia const& via) { return std::tie(via.hopHi, via.hopLo, via.label); };
   if (a.hopFamily != b.hopFamily) {
      return a.hopFamily <=> b.hopFamily;
   }
   if (auto const order = key(a) <=> key(b); order != 0) {
      return order;
   }
   if (auto const order = a.weight == b.weight ? std::strong_ordering::equal : weight(a) <=> weight(b); order != 0) {
      return order;
   }
   return std::tie(a.viaIndex, a.forwardingAction, legA.vrfId, legA.vrfName) <=>
          std::tie(b.viaIndex, b.forwardingAction, legB.vrfId, legB.vrfName);
}

StoredVia* ViaArena::room(std::size_t count) {
   constexpr std::size_t chunkSize = 4096;
   if (count > left_) {
      left_ = std::max(count, chunks_.empty() ? std::size_t{16} : chunkSize);
      chunks_.push_back(std::make_unique_for_overwrite<StoredVia[]>(left_));
      free_ = chunks_.back().get();
   }
   left_ -= count;
   return std::exchange(free_, free_ + count);
}

}  // namespace Kiv
