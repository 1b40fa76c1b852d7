#pragma once

#include "Lumen/BasicAddrWithMask.h"

namespace Lumen {

// An IPv6 interface address, "2001:db8::1/64".
using Ip6AddrWithMask = BasicAddrWithMask<Ip6Addr>;

static_assert(sizeof(Ip6AddrWithMask) == 24 && std::is_trivially_copyable_v<Ip6AddrWithMask>);
static_assert(std::has_unique_object_representations_v<Ip6AddrWithMask>);

}  // namespace Lumen
