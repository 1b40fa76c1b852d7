#include "Kiv/fecs/FecCache.h"

#include "Kiv/common/SafeLookup.h"
#include "Tunnel/TunnelId.h"

#include <atomic>
#include <string>

namespace Kiv {

namespace {

using Vault::Fib::FecId;
using Vault::Fib::Via;
using Vault::Fib::ViaIndex;

// What adjacency types mean to the display; every other valid one is an ordinary IPv4 FEC.
constexpr U8 adjTypeIpv6 = 1;
constexpr U8 adjTypeMadeUp = 4;
constexpr U8 adjTypeMarksViaIndex = 15;
constexpr U8 adjTypeEvpn = 24;

// Far above those that writers of tables count up to.
FecId nextMadeUpFecId() noexcept {
   static std::atomic<U64> last{U64{1} << (FecId::idBits - 1U)};
   return FecId::of(adjTypeMadeUp, ++last);
}

U32 weightSum(std::span<Via const> vias) {
   U32 sum = 0;
   for (auto const& via : vias) {
      sum += U16{via.weight};
   }
   return sum;
}

bool isVxlan(Via const& via) {
   return Tunnel::tunnelType(via.tunnelId) == Tunnel::TunnelType::evpnVxlan;
}

// A FEC that has vanished, or cannot be read, reads as an empty one.
template <class Table, class Fec>
Fec const& lookedUp(Zam::Ptr<Table const> const& table, FecId fecId, Fec& fec) {
   bool const found = safeLookup(table.get(), [&](Table const& fecs) { return fecs.fec(fecId, fec); });
   if (!found) {
      fec.primaryVias = 0;
      fec.vias.clear();
   }
   return fec;
}

}  // namespace

FecRecord* FecCache::copyAdjacency(FecId fecId) {
   if (!fecId) {
      return nullptr;
   }
   if (auto* const known = record(fecId); known != nullptr) {
      return known;
   }
   Pending pending;
   copyFec(fecId, pending);
   copyAll(pending);
   return record(fecId);
}

void FecCache::copyAll(Pending& pending) {
   while (!pending.empty()) {
      auto const next = pending.back();
      pending.pop_back();
      if (!fecHas(next)) {
         copyFec(next, pending);
      }
   }
}

// The table may hold FECs of any id, and routes may name one that it does not hold.
FecId FecCache::unusedFecId() const {
   auto const& sources = store_->sources();
   Vault::Fib::Fec fec;
   Vault::FibGen::Fec generic;
   auto const isUsed = [&](FecId fecId) {
      auto const isIn = [fecId](auto const& table, auto& scratch) {
         return safeLookup(table.get(), [&](auto const& fecs) { return fecs.fec(fecId, scratch); });
      };
      return fecHas(fecId) ||
             (isGeneric() ? isIn(sources.forwardingGenStatus, generic) : isIn(sources.forwardingStatus, fec));
   };
   auto fecId = nextMadeUpFecId();
   while (isUsed(fecId)) {
      fecId = nextMadeUpFecId();
   }
   return fecId;
}

FecRecord& FecCache::makeUp(std::span<Via const> vias) {
   Pending pending;
   auto& record = cachedFecIs(unusedFecId(), 0, vias, pending);
   copyAll(pending);
   return record;
}

// Copies the FEC from the table that holds its kind.
void FecCache::copyFec(FecId fecId, Pending& pending) {
   auto const& sources = store_->sources();
   auto const adjType = fecId.adjType();  // raises the range error for a type that there is not
   if (adjType == adjTypeEvpn) {
      cachedFecIs(fecId, 0, {}, pending);
   } else if (isGeneric()) {
      copyFrom(sources.forwardingGenStatus, fecId, fecGen_, pending);
   } else if (adjType == adjTypeIpv6) {
      copyFrom(sources.forwarding6Status, fecId, fec6_, pending);
   } else {
      copyFrom(sources.forwardingStatus, fecId, fec_, pending);
   }
}

template <class Table, class Fec>
void FecCache::copyFrom(Zam::Ptr<Table const> const& table, FecId fecId, Fec& scratch, Pending& pending) {
   auto const& fec = lookedUp(table, fecId, scratch);
   cachedFecIs(fecId, fec.primaryVias, fec.vias, pending);
}

// Copies one FEC, and pushes onto `pending` every FEC that its vias point at and that is not here yet.
FecRecord& FecCache::cachedFecIs(FecId fecId, U16 primaryVias, std::span<Via const> vias, Pending& pending) {
   auto const number = store_->add(fecId);
   auto& record = store_->record(number);
   auto const adjType = fecId.adjType();
   if (adjType == adjTypeEvpn) {
      copyEvpnVias(record);
   } else {
      bool const isIpv6 = adjType == adjTypeIpv6 && !isGeneric();
      hasV6Nexthop_ = hasV6Nexthop_ || (isIpv6 && store_->sources().family == Lumen::AddressFamily::ipv4);
      record.primaryVias = primaryVias;
      record.hasBackup = primaryVias != 0 && vias.size() > primaryVias;
      copyVias(record, vias, pending);
      copyPolicies(record, pending);
   }
   store_->numberIs(fecId, number);
   return record;
}

void FecCache::copyVias(FecRecord& record, std::span<Via const> vias, Pending& pending) {
   record.weightSum = weightSum(record.hasBackup ? vias.first(record.primaryVias) : vias);
   bool const unequalCost = record.weightSum > vias.size();
   vias_.clear();
   for (std::size_t i = 0; i < vias.size(); ++i) {
      U16 const index = ViaIndex(static_cast<U32>(i)).value();
      auto const& via = vias[i];
      auto const& stored = vias_.emplace_back(storedVia(via, index, record, unequalCost));
      record.hierarchical = record.hierarchical || via.intfId.isFecId();
      if (FecId const next(via.intfId.fecId()); next && !stored.isForwardingVrfAction() && !fecHas(next)) {
         pending.push_back(next);
      }
      if (isVxlan(via)) {
         copyVxlan(record, via, stored);
      }
      if (auto const& shown = store_->arena().leg(stored).intfId; shown.isDynamicTunnel()) [[unlikely]] {
         follow(shown, pending);
      }
   }
   record.tableVias = static_cast<U16>(vias.size());
   store_->viasAre(record, vias_);
}

StoredVia FecCache::storedVia(Via const& via, U16 index, FecRecord const& record, bool unequalCost) {
   StoredVia stored{.label = Lumen::MplsLabel(via.label).value(),
                    .position = index,
                    .forwardingAction = via.forwardingAction,
                    .isBackup = record.hasBackup && index >= record.primaryVias};
   stored.hopIs(via.hop);
   stored.leg = legOf(via, stored.isForwardingVrfAction());
   hasV6Nexthop_ = hasV6Nexthop_ || (isGeneric() && via.hop.family() == Lumen::AddressFamily::ipv6);
   if (via.fecId && via.fecId.adjType() == adjTypeMarksViaIndex) {
      stored.viaIndex = index;
   }
   if (unequalCost) {
      stored.weight = store_->arena().weightIs(std::to_string(U16{via.weight}));
   }
   return stored;
}

// The interface that stands for the via's target in the display, with the VRF of the interface that it leaves through.
U32 FecCache::legOf(Via const& via, bool isForwardingVrfAction) {
   auto const& interfaceVrf = store_->sources().interfaceVrf;
   auto const leg = [&](Lumen::IntfId const& shown) {
      auto const vrf = interfaceVrf && via.intfId.isValid() ? interfaceVrf(via.intfId) : InterfaceVrf();
      return store_->arena().legIs({shown, vrf.vrfId, vrf.vrfName});
   };
   if (isForwardingVrfAction) {
      return leg(Lumen::IntfId::fromFecId(FecId::of(0, via.forwardingVrf).value()));
   }
   // A VXLAN tunnel shows as the interface that it uses.
   if (via.tunnelId != 0 && !isVxlan(via)) {
      return leg(Lumen::IntfId::fromTunnelId(via.tunnelId));
   }
   if (auto const* const known = legs_.find(via.intfId); known != nullptr) [[likely]] {
      return *known;
   }
   return legs_.insertOrReplace(via.intfId, leg(via.intfId));
}

// The VXLAN next hop of a via, which its tunnel tells.
void FecCache::copyVxlan(FecRecord& record, Via const& via, StoredVia const& stored) {
   auto const& table = store_->sources().evpnVxlanTunnelTable;
   auto const* const entry = table ? table->entry(via.tunnelId) : nullptr;
   if (entry != nullptr) {
      store_->extras(record).vxlanOfVia.insertOrReplace(store_->arena().cached(stored), *entry);
   }
}

// The EVPN vias of a FEC that only the route cache has.
void FecCache::copyEvpnVias(FecRecord& record) {
   using Routing::Rib::RouteCache::Evpn::ViaIndex;
   auto const& config = store_->sources().routeCacheEvpnViaConfig;
   auto const vias = config ? config->via(record.fecId.value()) : std::span<CachedFec::EvpnVia const>();
   if (!vias.empty()) {
      (void)ViaIndex(vias.size() - 1);
      store_->extras(record).evpnVias.assign(vias.begin(), vias.end());
      record.preparedVias = static_cast<U32>(vias.size());
   }
}

// Where policies take the traffic: of a policy FEC all of it, of others the classes that are overridden.
void FecCache::copyPolicies(FecRecord& record, Pending& pending) {
   if (record.isSrTePolicy()) {
      store_->extras(record).policyVias = policyVias(record.fecId, pending);
   }
   auto const& overrides = store_->sources().cbfFecOverrideMap;
   auto const* const classes = overrides ? overrides->fecOverride(record.fecId.value()) : nullptr;
   if (classes != nullptr) {
      for (auto const& each : *classes) {
         store_->extras(record).cbfClasses.push_back({each.dscp, policyVias(FecId(each.fecId), pending)});
      }
   }
}

std::vector<PolicyVia> FecCache::policyVias(FecId fecId, Pending& pending) {
   std::vector<PolicyVia> vias;
   Vault::Fib::Fec fec;
   for (auto const& via : lookedUp(store_->sources().policyForwardingStatus, fecId, fec).vias) {
      vias.push_back({.tunnelId = via.tunnelId,
                      .nexthop = {.intfId = via.intfId, .hop = via.hop},
                      .label = via.label,
                      .weight = via.weight});
      follow(via.tunnelId != 0 ? Lumen::IntfId::fromTunnelId(via.tunnelId) : via.intfId, pending);
   }
   return vias;
}

// Pushes the FECs that this stands for, or that the ways of the tunnel lead to, through whatever further tunnels.
void FecCache::follow(Lumen::IntfId const& intfId, Pending& pending) {
   auto const& tunnelFib = store_->sources().tunnels.tunnelFib;
   std::vector<Lumen::IntfId> next{intfId};
   while (!next.empty()) {
      auto const at = next.back();
      next.pop_back();
      if (FecId const fecId(at.fecId()); fecId && !fecHas(fecId)) {
         pending.push_back(fecId);
      }
      auto const* const entry = tunnelFib && at.isDynamicTunnel() ? tunnelFib->entry(at.tunnelId()) : nullptr;
      if (entry == nullptr || followed_.find(at.tunnelId()) != nullptr) {
         continue;
      }
      followed_.insertOrReplace(at.tunnelId(), true);
      for (auto const* const ways : {&entry->vias, &entry->backupVias}) {
         for (auto const& way : *ways) {
            next.push_back(way.intfId);
         }
      }
   }
}

Zam::Ptr<CachedFec> FecCache::fec(FecId fecId) const {
   if (auto const* const known = handles_.find(fecId); known != nullptr) {
      return *known;
   }
   auto const* const number = store_->find(fecId);
   return number != nullptr ? handles_.insertOrReplace(fecId, Zam::makePtr<CachedFec>(store_, *number)) : nullptr;
}

Zam::Ptr<CachedFec> FecCache::handle(FecRecord const& record) const {
   return Zam::makePtr<CachedFec>(store_, record.number);
}

void FecCache::fecIs(Zam::Ptr<CachedFec> const& fec) {
   auto number = fec->number();
   if (fec->store() != store_) {
      number = store_->add(fec->fecId());
      store_->copy(*fec->store(), fec->record(), number);
      fec->movedTo(store_, number);
   }
   store_->numberIs(fec->fecId(), number);
   handles_.insertOrReplace(fec->fecId(), fec);
}

Zam::Ptr<CachedFec> FecCache::fecCopy(FecId fecId) {
   auto const* const original = record(fecId);
   if (original == nullptr) {
      return nullptr;
   }
   auto const copyId = unusedFecId();
   auto const number = store_->add(copyId);
   store_->copy(*store_, *original, number);
   store_->numberIs(copyId, number);
   return fec(copyId);
}

bool FecCache::fecDel(FecId fecId) {
   handles_.erase(fecId);
   return store_->erase(fecId);
}

void FecCache::fecDelAll() {
   handles_.clear();
   store_->clear();
}

}  // namespace Kiv
