#include "Kiv/routedisplay/FecCache.h"

#include "Kiv/routedisplay/SafeLookup.h"

#include <algorithm>
#include <string>

namespace Kiv {

namespace {

using Vault::Fib::FecId;
using Vault::Fib::ViaIndex;

// What adjacency types mean to the display; every other valid one is an ordinary IPv4 FEC.
constexpr U8 adjTypeIpv6 = 1;
constexpr U8 adjTypeMarksViaIndex = 15;

// The tunnel type is in the bits from 44 up; tunnels of this type print as the interface that they use.
constexpr int tunnelTypeShift = 44;
constexpr U64 tunnelTypeOfPlainInterface = 9;

template <class Family>
bool genericFib(RouteSorterOf<Family> const& sorter) {
   return sorter.inputs().forwardingGenStatus != nullptr;
}

// A FEC that has vanished, or cannot be read, reads as an empty one.
template <class Fec, class Table>
Fec lookedUp(Zam::Ptr<Table const> const& table, FecId fecId) {
   return safeLookup(table.get(), [&](Table const& fecs) {
      Fec record;
      return fecs.fec(fecId, record) ? record : Fec{};
   });
}

template <class Fec>
U64 weightSum(Fec const& record, U32 vias) {
   U64 sum = 0;
   for (U32 i = 0; i < vias; ++i) {
      sum += U16{record.vias[ViaIndex(i).value()].weight};
   }
   return sum;
}

// The interface that stands for the via's target in the display.
Lumen::IntfId displayedIntfId(Vault::Fib::Via const& via, CachedVia const& cached) {
   if (cached.isForwardingVrfAction()) {
      return Lumen::IntfId::fromFecId(FecId::of(0, via.forwardingVrf).value());
   }
   if (via.tunnelId != 0 && via.tunnelId >> tunnelTypeShift != tunnelTypeOfPlainInterface) {
      return Lumen::IntfId::fromTunnelId(via.tunnelId);
   }
   return via.intfId;
}

// The VRF that the via leaves through, from its interface.
template <class Family>
void takeVrf(RouteSorterOf<Family> const& sorter, Lumen::IntfId const& intfId, CachedVia& cached) {
   auto const& ipStatus = sorter.inputs().ipStatus;
   if (!ipStatus || !intfId.isValid()) {
      return;
   }
   auto const* const status = ipStatus->intfStatus(intfId);
   if (status != nullptr && status->vrfId != Vrf::VrfIdMap::noVrf) {
      cached.vrfId = status->vrfId;
      cached.vrfName = status->vrfName;
   }
}

template <class Family>
CachedVia cachedVia(RouteSorterOf<Family>& sorter, Vault::Fib::Via const& via, U16 index, CachedFec const& fec,
                    bool unequalCost) {
   CachedVia cached;
   takeVrf(sorter, via.intfId, cached);
   cached.hop = via.hop;
   if (genericFib(sorter) && via.hop.family() == Lumen::AddressFamily::ipv6) {
      sorter.hasV6NexthopIs(true);
   }
   cached.isBackup = fec.hasBackup && index >= fec.primaryVias;
   cached.viaLabel = via.label;
   if (via.fecId && via.fecId.adjType() == adjTypeMarksViaIndex) {
      cached.viaIndex = index;
   }
   if (unequalCost) {
      cached.viaWeight = std::to_string(U16{via.weight});
   }
   cached.forwardingAction = via.forwardingAction;
   cached.intfId = displayedIntfId(via, cached);
   return cached;
}

// The address, or the family's zero address for a via whose destination is on its own link.
template <class Family>
Zam::String nexthopText(CachedVia const& via) {
   if (!via.hop.isEmpty()) {
      return via.hop.stringValue();
   }
   return via.intfId.isNamed() ? typename Family::Addr().stringValue() : std::string();
}

}  // namespace

template <class Family, class Fec>
void cachedFecIs(RouteSorterOf<Family>& sorter, FecId fecId, Fec const& record, std::vector<FecId>& pending) {
   auto const adjType = fecId.adjType();  // raises the range error for a type that there is not
   auto const fec = Zam::makePtr<CachedFec>(fecId);
   if (std::is_same_v<Family, Ipv4> && adjType == adjTypeIpv6 && !genericFib(sorter)) {
      sorter.hasV6NexthopIs(true);
   }
   auto const vias = static_cast<U32>(record.vias.size());
   fec->primaryVias = record.primaryVias;
   fec->hasBackup = record.primaryVias != 0 && vias > record.primaryVias;
   fec->weightSum = weightSum(record, fec->hasBackup ? record.primaryVias : vias);
   bool const unequalCost = fec->weightSum > vias;
   for (U32 i = 0; i < vias; ++i) {
      U16 const index = ViaIndex(i).value();
      auto const& via = record.vias[index];
      auto cached = cachedVia(sorter, via, index, *fec, unequalCost);
      if (unequalCost) {
         fec->viaWeight.is(index, cached.viaWeight);
      }
      fec->viaForwardingAction.is(index, cached.forwardingAction);
      bool const followed = via.intfId.isFecId() && !cached.isForwardingVrfAction();
      fec->hierarchical = fec->hierarchical || via.intfId.isFecId();
      fec->viaIs(std::move(cached), true);
      if (followed && !sorter.fecHas(FecId(via.intfId.fecId()))) {
         pending.push_back(FecId(via.intfId.fecId()));
      }
   }
   sorter.fecIs(fec);
}

template <class Family>
void copyAdjacency(RouteSorterOf<Family>& sorter, FecId fecId) {
   if (!fecId || sorter.fecHas(fecId)) {
      return;
   }
   auto const& in = sorter.inputs();
   std::vector<FecId> pending{fecId};
   while (!pending.empty()) {
      auto const next = pending.back();
      pending.pop_back();
      if (!next || sorter.fecHas(next)) {
         continue;
      }
      if (genericFib(sorter)) {
         cachedFecIs(sorter, next, lookedUp<Vault::FibGen::Fec>(in.forwardingGenStatus, next), pending);
      } else if (next.adjType() == adjTypeIpv6) {
         cachedFecIs(sorter, next, lookedUp<Vault::Fib6::Fec>(in.forwarding6Status, next), pending);
      } else {
         cachedFecIs(sorter, next, lookedUp<Vault::Fib::Fec>(in.forwardingStatus, next), pending);
      }
   }
}

Zam::String interfaceText(CachedVia const& via) {
   return via.intfId.isNamed() ? Zam::String(via.intfId.name()) : Zam::String(via.intfId.stringValue());
}

template <class Family>
void prepareViaTexts(RouteSorterOf<Family> const& sorter, CachedFec& fec) {
   auto const& in = sorter.inputs();
   fec.egressVrf.delAll();
   fec.interfaceDescription.delAll();
   fec.weightText.delAll();
   U16 index = 0;
   for (auto const& [via, present] : fec.via()) {
      fec.nexthopAddr.is(index, nexthopText<Family>(via));
      fec.interface.is(index, interfaceText(via));
      if (via.vrfId != Vrf::VrfIdMap::noVrf && via.vrfId != in.vrfId) {
         fec.egressVrf.is(index, via.vrfName.bytes());
      }
      if (in.allIntfConfig && !in.allIntfConfig->description(via.intfId).empty()) {
         fec.interfaceDescription.is(index, in.allIntfConfig->description(via.intfId));
      }
      if (!via.viaWeight.empty()) {
         fec.weightText.is(index, via.viaWeight.bytes() + "/" + std::to_string(fec.weightSum));
      }
      ++index;
   }
   fec.textsPrepared = true;
}

template void prepareViaTexts(RouteSorterOf<Ipv4> const&, CachedFec&);
template void prepareViaTexts(RouteSorterOf<Ipv6> const&, CachedFec&);
template void copyAdjacency(RouteSorterOf<Ipv4>&, FecId);
template void copyAdjacency(RouteSorterOf<Ipv6>&, FecId);

}  // namespace Kiv
