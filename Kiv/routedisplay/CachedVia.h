#pragma once

#include "L3/VrfName.h"
#include "Lumen/IntfId.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/MplsLabel.h"
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

}  // namespace Kiv
