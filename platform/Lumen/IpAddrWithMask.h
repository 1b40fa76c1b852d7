#pragma once

#include "Lumen/BasicAddrWithMask.h"

namespace Lumen {

// An IPv4 interface address, "10.1.2.3/16".
using IpAddrWithMask = BasicAddrWithMask<IpAddr>;

static_assert(sizeof(IpAddrWithMask) == 8 && std::is_trivially_copyable_v<IpAddrWithMask>);
static_assert(std::has_unique_object_representations_v<IpAddrWithMask>);

}  // namespace Lumen
