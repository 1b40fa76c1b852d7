#pragma once

#include "Kiv/nexthopgroup/NexthopGroupCliCounterInterface.h"
#include "Kiv/nexthopgroup/NexthopGroupCounterHelper.h"
#include "L3/VrfName.h"
#include "NexthopGroup/EntryStatus.h"
#include "Routing/Hardware/NexthopGroupStatus.h"
#include "Routing/Hardware/Status.h"
#include "Routing/NexthopGroup/Config.h"
#include "Zam/Export.h"
#include "Zam/Value.h"

namespace Kiv {

// Nexthop groups in detail: what each is, where its entries lead, whether the hardware of one VRF forwards by them, and
// what they have carried since the counters were last cleared. A null input is an empty one.
struct KIV_EXPORT NexthopGroupDetailHelper : Zam::ValueType {
   Zam::Ptr<Routing::NexthopGroup::Config const> nhgConfig{};
   Zam::Ptr<NexthopGroup::EntryStatus const> nhgEntryStatus{};
   Zam::Ptr<Routing::Hardware::NexthopGroupStatus const> nhgHwStatus{};
   Zam::Ptr<Routing::Hardware::Status const> routingHwStatus{};
   Zam::Ptr<NexthopGroupCounterHelper const> counterHelper{};
   // When there is one, it tells what the counters of the counter helper have counted.
   Zam::Ptr<NexthopGroupCliCounterInterface> counterInterface{};
   L3::VrfName vrfName{};
   // Which groups; the empty name and the id 0 stand for any.
   Zam::String nhgName{};
   U32 nhgId = 0;

   // Prints the groups in the order of their names. False, and errno tells why, when the output is not complete.
   bool render(U32 fd, U32 fmt) const;

   static constexpr auto zamDescription() {
      using D = NexthopGroupDetailHelper;
      return Zam::describe<D>(
          "Kiv::NexthopGroupDetailHelper", Zam::attribute("nhgConfig", &D::nhgConfig),
          Zam::attribute("nhgEntryStatus", &D::nhgEntryStatus), Zam::attribute("nhgHwStatus", &D::nhgHwStatus),
          Zam::attribute("routingHwStatus", &D::routingHwStatus), Zam::attribute("counterHelper", &D::counterHelper),
          Zam::attribute("counterInterface", &D::counterInterface), Zam::attribute("vrfName", &D::vrfName),
          Zam::attribute("nhgName", &D::nhgName), Zam::attribute("nhgId", &D::nhgId));
   }
};

}  // namespace Kiv
