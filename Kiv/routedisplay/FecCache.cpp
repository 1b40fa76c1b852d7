#include "Kiv/routedisplay/FecCache.h"

#include "Kiv/common/SafeLookup.h"
#include "Tunnel/TunnelId.h"

#include <string>

namespace Kiv {

namespace {

using Vault::Fib::FecId;
using Vault::Fib::ViaIndex;

// What adjacency types mean to the display; every other valid one is an ordinary IPv4 FEC.
constexpr U8 adjTypeIpv6 = 1;
constexpr U8 adjTypeMarksViaIndex = 15;
constexpr U8 adjTypeEvpn = 24;

template <class Family>
bool genericFib(RouteSorterOf<Family> const& sorter) {
   return sorter.inputs().forwardingGenStatus != nullptr;
}

// A FEC that has vanished, or cannot be read, reads as an empty one.
template <class Fec, class Table>
Fec lookedUp(Zam::Ptr<Table const> const& table, FecId fecId) {
   return safeLookup(table.get(), [&](Table const& fecs) {
      Fec record;
      fecs.fec(fecId, record);  // leaves it empty when there is none
      return record;
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
   // A VXLAN tunnel shows as the interface that it uses.
   if (via.tunnelId != 0 && Tunnel::tunnelType(via.tunnelId) != Tunnel::TunnelType::evpnVxlan) {
      return Lumen::IntfId::fromTunnelId(via.tunnelId);
   }
   return via.intfId;
}

// The VXLAN next hop of a via, which its tunnel tells.
template <class Family>
Tunnel::TunnelTable::EvpnVxlanTunnelEntry const* vxlanEntry(RouteSorterOf<Family> const& sorter,
                                                            Vault::Fib::Via const& via) {
   auto const& table = sorter.inputs().evpnVxlanTunnelTable;
   bool const isVxlan = Tunnel::tunnelType(via.tunnelId) == Tunnel::TunnelType::evpnVxlan;
   return isVxlan && table ? table->entry(via.tunnelId) : nullptr;
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

// The EVPN vias of a FEC that only the route cache has.
template <class Family>
void copyEvpnVias(RouteSorterOf<Family> const& sorter, CachedFec& fec) {
   using Routing::Rib::RouteCache::Evpn::ViaIndex;
   auto const& config = sorter.inputs().routeCacheEvpnViaConfig;
   auto const vias =
       config ? config->via(fec.fecId().value()) : std::span<Tunnel::TunnelTable::EvpnVxlanTunnelEntry const>();
   for (std::size_t i = 0; i < vias.size(); ++i) {
      fec.viaEvpnEntry.insertOrReplace(ViaIndex(i).value(), vias[i]);
   }
   fec.preparedVias = fec.viaEvpnEntry.size();
}

template <class Family, class Fec>
void copyVias(RouteSorterOf<Family>& sorter, CachedFec& fec, Fec const& record, std::vector<FecId>& pending) {
   auto const vias = static_cast<U32>(record.vias.size());
   fec.primaryVias = record.primaryVias;
   fec.hasBackup = record.primaryVias != 0 && vias > record.primaryVias;
   fec.weightSum = weightSum(record, fec.hasBackup ? record.primaryVias : vias);
   bool const unequalCost = fec.weightSum > vias;
   for (U32 i = 0; i < vias; ++i) {
      U16 const index = ViaIndex(i).value();
      auto const& via = record.vias[index];
      auto cached = cachedVia(sorter, via, index, fec, unequalCost);
      if (unequalCost) {
         fec.viaWeight.insertOrReplace(index, cached.viaWeight);
      }
      fec.viaForwardingAction.insertOrReplace(index, cached.forwardingAction);
      fec.hierarchical = fec.hierarchical || via.intfId.isFecId();
      if (FecId const next(via.intfId.fecId()); next && !cached.isForwardingVrfAction() && !sorter.fecHas(next)) {
         pending.push_back(next);
      }
      if (auto const* const entry = vxlanEntry(sorter, via); entry != nullptr) {
         fec.vxlanOfVia.insertOrReplace(cached, *entry);
      }
      fec.viaIs(std::move(cached), true);
   }
}

template <class Family>
std::vector<PolicyVia> policyVias(RouteSorterOf<Family> const& sorter, FecId fecId) {
   std::vector<PolicyVia> vias;
   for (auto const& via : lookedUp<Vault::Fib::Fec>(sorter.inputs().policyForwardingStatus, fecId).vias) {
      PolicyVia policyVia;
      policyVia.tunnelId = via.tunnelId;
      policyVia.nexthop.intfId = via.intfId;
      policyVia.nexthop.hop = via.hop;
      policyVia.label = via.label;
      policyVia.weight = via.weight;
      vias.push_back(std::move(policyVia));
   }
   return vias;
}

// Where policies take the traffic: of a policy FEC all of it, of others the classes that are overridden.
template <class Family>
void copyPolicies(RouteSorterOf<Family> const& sorter, CachedFec& fec) {
   if (fec.isSrTePolicy()) {
      fec.policyVias = policyVias(sorter, fec.fecId());
   }
   auto const& overrides = sorter.inputs().cbfFecOverrideMap;
   auto const* const classes = overrides ? overrides->fecOverride(fec.fecId().value()) : nullptr;
   if (classes != nullptr) {
      for (auto const& each : *classes) {
         fec.cbfClasses.push_back({each.dscp, policyVias(sorter, FecId(each.fecId))});
      }
   }
}

}  // namespace

template <class Family, class Fec>
void cachedFecIs(RouteSorterOf<Family>& sorter, FecId fecId, Fec const& record, std::vector<FecId>& pending) {
   auto const adjType = fecId.adjType();  // raises the range error for a type that there is not
   auto const fec = cachedFecFactory(fecId);
   if (adjType == adjTypeEvpn) {
      copyEvpnVias(sorter, *fec);
   } else {
      if (std::is_same_v<Family, Ipv4> && adjType == adjTypeIpv6 && !genericFib(sorter)) {
         sorter.hasV6NexthopIs(true);
      }
      copyVias(sorter, *fec, record, pending);
      copyPolicies(sorter, *fec);
   }
   sorter.fecIs(fec);
}

namespace {

// Copies the FEC from the table that holds its kind.
template <class Family>
void copyFec(RouteSorterOf<Family>& sorter, FecId fecId, std::vector<FecId>& pending) {
   auto const& in = sorter.inputs();
   if (fecId.adjType() == adjTypeEvpn) {
      cachedFecIs(sorter, fecId, Vault::Fib::Fec(), pending);
   } else if (genericFib(sorter)) {
      cachedFecIs(sorter, fecId, lookedUp<Vault::FibGen::Fec>(in.forwardingGenStatus, fecId), pending);
   } else if (fecId.adjType() == adjTypeIpv6) {
      cachedFecIs(sorter, fecId, lookedUp<Vault::Fib6::Fec>(in.forwarding6Status, fecId), pending);
   } else {
      cachedFecIs(sorter, fecId, lookedUp<Vault::Fib::Fec>(in.forwardingStatus, fecId), pending);
   }
}

}  // namespace

template <class Family>
CachedFec* copyAdjacency(RouteSorterOf<Family>& sorter, FecId fecId) {
   if (!fecId) {
      return nullptr;
   }
   if (auto const* const cached = sorter.fecs().find(fecId); cached != nullptr) {
      return cached->get();
   }
   std::vector<FecId> pending{fecId};
   while (!pending.empty()) {
      auto const next = pending.back();
      pending.pop_back();
      if (!sorter.fecHas(next)) {
         copyFec(sorter, next, pending);
      }
   }
   return sorter.fecs().find(fecId)->get();
}

template CachedFec* copyAdjacency(RouteSorterOf<Ipv4>&, FecId);
template CachedFec* copyAdjacency(RouteSorterOf<Ipv6>&, FecId);
template void cachedFecIs(RouteSorterOf<Ipv4>&, FecId, Vault::Fib::Fec const&, std::vector<FecId>&);
template void cachedFecIs(RouteSorterOf<Ipv6>&, FecId, Vault::Fib::Fec const&, std::vector<FecId>&);

}  // namespace Kiv
