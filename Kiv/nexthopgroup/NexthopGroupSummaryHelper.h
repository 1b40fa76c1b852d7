#pragma once

#include "L3/VrfName.h"
#include "NexthopGroup/EntryStatus.h"
#include "Routing/Hardware/NexthopGroupStatus.h"
#include "Routing/Hardware/Status.h"
#include "Routing/NexthopGroup/Config.h"
#include "Zam/Export.h"
#include "Zam/OrderedMap.h"
#include "Zam/Value.h"

namespace Kiv {

// How many nexthop groups there are, of which types and sizes, and how many of them the hardware of one VRF does not
// forward by. The caller sets the inputs, counts, and renders; counting adds to what is there. A null input is an empty
// one.
struct KIV_EXPORT NexthopGroupSummaryHelper : Zam::ValueType {
   Zam::Ptr<Routing::NexthopGroup::Config const> nhgConfig{};
   Zam::Ptr<NexthopGroup::EntryStatus const> nhgEntryStatus{};
   Zam::Ptr<Routing::Hardware::NexthopGroupStatus const> nhgHwStatus{};
   Zam::Ptr<Routing::Hardware::Status const> routingHwStatus{};
   L3::VrfName vrfName{};
   U32 nhgCount = 0;
   U32 nhgUnprogrammedCount = 0;
   Zam::OrderedMap<Routing::NexthopGroup::NexthopGroupType, U32> nhgPerType{};
   Zam::OrderedMap<U32, U32> nhgPerSize{};

   // A group that has no id, or whose row of the table of ids is damaged, is not programmed.
   void processNexthopGroups();
   // False, and errno tells why, when the output is not complete.
   bool render(U32 fd, U32 fmt) const;

   void nhgCountInc(U32 count) noexcept { nhgCount += count; }
   void nhgUnprogrammedCountInc(U32 count) noexcept { nhgUnprogrammedCount += count; }

   static constexpr auto zamDescription() {
      using S = NexthopGroupSummaryHelper;
      return Zam::describe<S>(
          "Kiv::NexthopGroupSummaryHelper", Zam::attribute("nhgConfig", &S::nhgConfig),
          Zam::attribute("nhgEntryStatus", &S::nhgEntryStatus), Zam::attribute("nhgHwStatus", &S::nhgHwStatus),
          Zam::attribute("routingHwStatus", &S::routingHwStatus), Zam::attribute("vrfName", &S::vrfName),
          Zam::attribute("nhgCount", &S::nhgCount), Zam::attribute("nhgUnprogrammedCount", &S::nhgUnprogrammedCount),
          Zam::collection("nhgPerType", &S::nhgPerType), Zam::collection("nhgPerSize", &S::nhgPerSize));
   }
};

}  // namespace Kiv
