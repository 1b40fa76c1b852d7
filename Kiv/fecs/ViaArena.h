#pragma once

#include "Kiv/fecs/CachedVia.h"
#include "Zam/HashMap.h"

#include <compare>
#include <deque>
#include <memory>
#include <span>
#include <vector>

// How the vias of a million FECs are kept: 32 bytes each, in one arena that is let go at once. What vias have in common
// (the interface with its VRF, the text of a weight) is kept once.
namespace Kiv {

// What a via leaves through.
struct ViaLeg {
   Lumen::IntfId intfId{};
   Vrf::VrfIdMap::VrfId vrfId = Vrf::VrfIdMap::noVrf;
   L3::VrfName vrfName{};

   bool operator==(ViaLeg const&) const = default;
};

// A via as it is kept: the fields of a CachedVia.
struct StoredVia {
   static constexpr U16 noPosition = 0xffff;

   U64 hopHi = 0;
   U64 hopLo = 0;
   U32 leg = 0;
   U32 label = Lumen::MplsLabel::noLabel;
   U16 weight = 0;
   U16 viaIndex = 0;
   U16 position = noPosition;  // in the FEC's own table
   Vault::Fib::ForwardingAction forwardingAction{};
   U8 hopFamily : 6 = 0;
   U8 isBackup : 1 = 0;
   U8 value : 1 = 1;  // what the collection of vias maps it to

   bool isForwardingVrfAction() const noexcept {
      return forwardingAction == Vault::Fib::ForwardingAction::forwardVrf ||
             forwardingAction == Vault::Fib::ForwardingAction::decapForwardVrf;
   }
   Lumen::IpGenAddr hop() const noexcept;
   void hopIs(Lumen::IpGenAddr const& hop) noexcept;
};
static_assert(sizeof(StoredVia) == 40 - 8);

class ViaArena {
 public:
   ViaArena();

   // The number under which the leg is kept, the same for equal ones.
   U32 legIs(ViaLeg const& leg);
   ViaLeg const& leg(StoredVia const& via) const noexcept { return legs_[via.leg]; }
   // RangeError for more different texts than weights can have.
   U16 weightIs(Zam::String const& weight);
   Zam::String const& weight(StoredVia const& via) const noexcept { return weights_[via.weight]; }

   StoredVia stored(CachedVia const& via, bool value);
   CachedVia cached(StoredVia const& via) const;
   // The order of vias, as of CachedVia.
   std::strong_ordering compare(StoredVia const& a, StoredVia const& b) const noexcept;

   // Room for so many vias, as long as the arena lives; what is given up is not used again.
   StoredVia* room(std::size_t count);

 private:
   struct LegHash {
      std::size_t operator()(ViaLeg const& leg) const noexcept {
         return Zam::combinedHash(leg.intfId.hashValue(), std::size_t{leg.vrfId},
                                  std::hash<L3::VrfName>()(leg.vrfName));
      }
   };
   struct WeightHash {
      std::size_t operator()(Zam::String const& text) const noexcept { return std::hash<std::string>()(text.bytes()); }
   };

   std::deque<ViaLeg> legs_;
   Zam::HashMap<ViaLeg, U32, LegHash> legNumbers_;
   std::deque<Zam::String> weights_;
   Zam::HashMap<Zam::String, U16, WeightHash> weightNumbers_;
   std::vector<std::unique_ptr<StoredVia[]>> chunks_;
   StoredVia* free_ = nullptr;
   std::size_t left_ = 0;
};

}  // namespace Kiv
