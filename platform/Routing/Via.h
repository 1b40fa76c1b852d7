#pragma once

#include "L3/VrfName.h"
#include "Lumen/EthAddr.h"
#include "Lumen/IntfId.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/MplsLabel.h"
#include "Lumen/Vni.h"
#include "Zam/Value.h"

#include <compare>
#include <tuple>

namespace Routing {

// One configured next hop of a static route: an address, an interface or both, maybe in another VRF. A via with a VTEP
// address is an EVPN via over VXLAN and has no next-hop address. Orders by its attributes as they stand here.
struct Via : Zam::ValueType {
   Lumen::IpGenAddr hop;
   Lumen::IntfId intfId;
   Lumen::MplsLabel mplsLabel;
   L3::VrfName egressVrf;
   Lumen::IpGenAddr vtepAddr;
   Lumen::Vni vni;
   Lumen::EthAddr routerMac;
   Lumen::IntfId localIntf;
   bool vtepSipValidation = false;

   static constexpr auto zamDescription() {
      return Zam::describe<Via>(
          "Routing::Via", Zam::attribute("hop", &Via::hop), Zam::attribute("intfId", &Via::intfId),
          Zam::attribute("mplsLabel", &Via::mplsLabel), Zam::attribute("egressVrf", &Via::egressVrf),
          Zam::attribute("vtepAddr", &Via::vtepAddr), Zam::attribute("vni", &Via::vni),
          Zam::attribute("routerMac", &Via::routerMac), Zam::attribute("localIntf", &Via::localIntf),
          Zam::attribute("vtepSipValidation", &Via::vtepSipValidation));
   }
   friend std::strong_ordering operator<=>(Via const& a, Via const& b) noexcept {
      return Zam::descriptionOf<Via>.with(
          [&a, &b](auto const&... at) { return std::tie(a.*at.member...) <=> std::tie(b.*at.member...); });
   }
};

}  // namespace Routing
