#pragma once

#include "L3/VrfNameRef.h"
#include "Lumen/Ip6AddrWithMask.h"

#include <set>

namespace Ip6 {

// The IPv6 addresses that are configured on one interface, link-local ones included.
struct IntfConfig {
   Zam::Ptr<L3::VrfNameRef const> vrf{};  // null in the default VRF
   std::set<Lumen::Ip6AddrWithMask> addr{};
};

}  // namespace Ip6
