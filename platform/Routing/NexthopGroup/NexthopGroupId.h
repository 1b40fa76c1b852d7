#pragma once

#include "Zam/Int.h"

namespace Routing::NexthopGroup {

// The number by which the forwarding tables know a nexthop group; 0 is none.
using NexthopGroupId = U32;

}  // namespace Routing::NexthopGroup
