#pragma once

#include "Routing/Rib/RouteCache/Evpn/ViaIndex.h"
#include "Tunnel/TunnelTable/EvpnVxlanTunnelEntry.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"

#include <span>
#include <vector>

namespace Routing::Rib::RouteCache::Evpn {

// The EVPN vias of the route cache's FECs (adjacency type 24), by FEC id. Written by the RIB agent.
class KIV_EXPORT ViaConfig final : public Zam::PtrInterface {
 public:
   using Via = Tunnel::TunnelTable::EvpnVxlanTunnelEntry;
   using Fecs = Zam::HashMap<U64, std::vector<Via>>;

   std::string_view fwkType() const noexcept override { return "Routing::Rib::RouteCache::Evpn::ViaConfig"; }

   Fecs const& fec() const noexcept { return fec_; }
   // The vias in index order, empty for an unknown FEC; good until the next change.
   std::span<Via const> via(U64 fecId) const {
      auto const* const vias = fec_.find(fecId);
      return vias != nullptr ? std::span<Via const>(*vias) : std::span<Via const>();
   }
   // Replaces all vias of the FEC. RangeError for more than a ViaIndex can number; the old vias then stay.
   void viaIs(U64 fecId, std::vector<Via> vias) {
      if (!vias.empty()) {
         ViaIndex(vias.size() - 1);
      }
      fec_.insertOrReplace(fecId, std::move(vias));
   }
   void viaDel(U64 fecId) { fec_.erase(fecId); }

 private:
   Fecs fec_;
};

}  // namespace Routing::Rib::RouteCache::Evpn
