#pragma once

#include "Lumen/EthAddr.h"
#include "Lumen/IntfId.h"
#include "Lumen/IpGenAddr.h"
#include "Lumen/Vni.h"
#include "Zam/Value.h"

namespace Tunnel::TunnelTable {

// A VXLAN next hop: the far tunnel end, the network it carries and the MAC address of the router there. It is present
// exactly when it differs from a fresh one, which every real next hop does by its VTEP address.
struct EvpnVxlanTunnelEntry : Zam::ValueType {
   Lumen::IpGenAddr vtepAddr;
   Lumen::Vni vni;
   Lumen::EthAddr routerMac;
   Lumen::IntfId localIntf;

   static constexpr auto zamDescription() {
      return Zam::describe<EvpnVxlanTunnelEntry>("Tunnel::TunnelTable::EvpnVxlanTunnelEntry",
                                                 Zam::attribute("vtepAddr", &EvpnVxlanTunnelEntry::vtepAddr),
                                                 Zam::attribute("vni", &EvpnVxlanTunnelEntry::vni),
                                                 Zam::attribute("routerMac", &EvpnVxlanTunnelEntry::routerMac),
                                                 Zam::attribute("localIntf", &EvpnVxlanTunnelEntry::localIntf));
   }
   explicit operator bool() const { return Zam::isSet(*this); }
};

}  // namespace Tunnel::TunnelTable
