#pragma once

#include "L3/VrfName.h"
#include "Lumen/IntfId.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/MplsLabel.h"
#include "Routing/NexthopGroup/NexthopGroupId.h"
#include "Routing/RouteType.h"
#include "Vault/Fib.h"
#include "Vrf/VrfId.h"
#include "Zam/Export.h"
#include "Zam/String.h"
#include "Zam/Value.h"

#include <compare>

namespace Kiv {

// One via of a cached FEC, ready for display.
struct KIV_EXPORT CachedVia : Zam::ValueType {
   Lumen::IpGenAddr hop{};
   Lumen::IntfId intfId{};  // may stand for a dynamic tunnel or for another FEC
   Vrf::VrfIdMap::VrfId vrfId = Vrf::VrfIdMap::noVrf;
   L3::VrfName vrfName{};
   bool isBackup = false;
   Lumen::MplsLabel viaLabel{};
   Zam::String viaWeight{};  // decimal, empty among equal-cost vias
   U16 viaIndex = 0;
   Vault::Fib::ForwardingAction forwardingAction{};

   // Whether the via forwards into a VRF instead of out of an interface.
   bool isForwardingVrfAction() const noexcept {
      return forwardingAction == Vault::Fib::ForwardingAction::forwardVrf ||
             forwardingAction == Vault::Fib::ForwardingAction::decapForwardVrf;
   }

   // Views of what the via leads to, all of them kept in intfId: the FEC that it resolves through, the tunnel, or the
   // VRF of a forwarding action; zero, or no VRF, when it leads to something else.
   Vault::Fib::FecId fecId() const noexcept {
      return isForwardingVrfAction() ? Vault::Fib::FecId() : Vault::Fib::FecId(intfId.fecId());
   }
   void fecIdIs(Vault::Fib::FecId fecId) noexcept { intfId = Lumen::IntfId::fromFecId(fecId.value()); }
   U64 tunnelId() const noexcept { return intfId.tunnelId(); }
   void tunnelIdIs(U64 tunnelId) noexcept { intfId = Lumen::IntfId::fromTunnelId(tunnelId); }
   Vrf::VrfIdMap::VrfId forwardingVrf() const noexcept {
      bool const known = isForwardingVrfAction() && intfId.isFecId();
      return known ? static_cast<U32>(Vault::Fib::FecId(intfId.fecId()).id()) : Vrf::VrfIdMap::noVrf;
   }
   void forwardingVrfIs(Vrf::VrfIdMap::VrfId vrf) {
      intfId = Lumen::IntfId::fromFecId(Vault::Fib::FecId::of(0, vrf).value());
   }

   static constexpr auto zamDescription() {
      return Zam::describe<CachedVia>(
          "Kiv::CachedVia", Zam::attribute("hop", &CachedVia::hop), Zam::attribute("intfId", &CachedVia::intfId),
          Zam::attribute("vrfId", &CachedVia::vrfId), Zam::attribute("vrfName", &CachedVia::vrfName),
          Zam::attribute("isBackup", &CachedVia::isBackup), Zam::attribute("viaLabel", &CachedVia::viaLabel),
          Zam::attribute("viaWeight", &CachedVia::viaWeight), Zam::attribute("viaIndex", &CachedVia::viaIndex),
          Zam::attribute("forwardingAction", &CachedVia::forwardingAction));
   }
};

// The order in which a route's vias are printed: primaries first, then by egress interface before address. Weights
// compare as text, so 10 comes before 9; the order is what users know.
KIV_EXPORT std::strong_ordering operator<=>(CachedVia const& a, CachedVia const& b);

// A via that forwards into a nexthop group.
struct KIV_EXPORT CachedNhgVia : Zam::ValueType {
   Routing::NexthopGroup::NexthopGroupId nhgId = 0;
   Zam::String nhgName{};

   static constexpr auto zamDescription() {
      return Zam::describe<CachedNhgVia>("Kiv::CachedNhgVia", Zam::attribute("nhgId", &CachedNhgVia::nhgId),
                                         Zam::attribute("nhgName", &CachedNhgVia::nhgName));
   }
};

// A via that takes the outer header off and looks the packet up again in a VRF.
struct KIV_EXPORT CachedFallbackVia : Zam::ValueType {
   Routing::Rib::DecapActionType decapType = Routing::Rib::DecapActionType::none;
   L3::VrfName vrfName{};

   static constexpr auto zamDescription() {
      return Zam::describe<CachedFallbackVia>("Kiv::CachedFallbackVia",
                                              Zam::attribute("decapType", &CachedFallbackVia::decapType),
                                              Zam::attribute("vrfName", &CachedFallbackVia::vrfName));
   }
};

}  // namespace Kiv
