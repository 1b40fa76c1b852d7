#pragma once

#include "Lumen/IntfId.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/MplsLabelOperation.h"
#include "Tunnel/IpTunnelEncap.h"
#include "Tunnel/TunnelId.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"
#include "Zam/Value.h"

#include <vector>

namespace Tunnel::TunnelFib {

// Names a label stack of the table; 0 is none.
using EncapId = U64;

// One way out of a tunnel. An interface that stands for a dynamic tunnel leads over that further tunnel.
struct Via : Zam::ValueType {
   Lumen::IntfId intfId;
   Lumen::IpGenAddr hop;
   EncapId encapId = 0;
   U32 weight = 1;  // this way's share of the tunnel's traffic

   static constexpr auto zamDescription() {
      return Zam::describe<Via>("Tunnel::TunnelFib::Via", Zam::attribute("intfId", &Via::intfId),
                                Zam::attribute("hop", &Via::hop), Zam::attribute("encapId", &Via::encapId),
                                Zam::attribute("weight", &Via::weight));
   }
};

struct Entry {
   std::vector<Via> vias{};
   std::vector<Via> backupVias{};
   IpTunnelEncap ipEncap{};  // of tunnels over IP

   bool operator==(Entry const&) const = default;
};

// The tunnels that are set up, with the ways they take and the label stacks they push. Written by the tunnel agent.
// A via may name a tunnel or a label stack that is not, or no longer, here.
class KIV_EXPORT TunnelFib final : public Zam::PtrInterface {
 public:
   using Entries = Zam::HashMap<TunnelId, Entry>;
   using LabelStackEncaps = Zam::HashMap<EncapId, Lumen::MplsLabelOperation>;

   std::string_view fwkType() const noexcept override { return "Tunnel::TunnelFib::TunnelFib"; }

   Entries const& entry() const noexcept { return entry_; }
   // Null when there is no such tunnel.
   Entry const* entry(TunnelId tunnelId) const { return entry_.find(tunnelId); }
   void entryIs(TunnelId tunnelId, Entry entry) { entry_.insertOrReplace(tunnelId, std::move(entry)); }
   void entryDel(TunnelId tunnelId) { entry_.erase(tunnelId); }

   LabelStackEncaps const& labelStackEncap() const noexcept { return labelStackEncap_; }
   // Null when there is no such label stack.
   Lumen::MplsLabelOperation const* labelStackEncap(EncapId encapId) const { return labelStackEncap_.find(encapId); }
   void labelStackEncapIs(EncapId encapId, Lumen::MplsLabelOperation const& labelStack) {
      labelStackEncap_.insertOrReplace(encapId, labelStack);
   }
   void labelStackEncapDel(EncapId encapId) { labelStackEncap_.erase(encapId); }

 private:
   Entries entry_;
   LabelStackEncaps labelStackEncap_;
};

}  // namespace Tunnel::TunnelFib
