#pragma once

#include "L3/VrfNameRef.h"
#include "Lumen/IpAddrWithMask.h"

#include <set>

namespace Ip {

// The IPv4 addresses that are configured on one interface. An address of 0.0.0.0/0 is none. The virtual addresses are
// those that the interface shares with its peers on other boxes; it has either an address of its own or a virtual one.
struct IpIntfConfig {
   Zam::Ptr<L3::VrfNameRef const> vrf{};  // null in the default VRF
   Lumen::IpAddrWithMask addrWithMask{};
   Lumen::IpAddrWithMask virtualAddrWithMask{};
   std::set<Lumen::IpAddrWithMask> secondaryWithMask{};
   std::set<Lumen::IpAddrWithMask> virtualSecondaryWithMask{};
};

}  // namespace Ip
