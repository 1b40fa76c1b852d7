#pragma once

namespace Kiv {

// Makes the nexthop group displays and their counters known to the type runtime.
void registerNexthopGroupTypes();

}  // namespace Kiv
