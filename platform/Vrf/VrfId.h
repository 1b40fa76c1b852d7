#pragma once

#include "Zam/Int.h"

// The numbers by which the forwarding tables know VRFs.
namespace Vrf::VrfIdMap {

using VrfId = U32;

inline constexpr VrfId defaultVrf = 0;
// "No VRF": a route that is not leaked, a via that stays in its own VRF.
inline constexpr VrfId noVrf = 0xffffff;

}  // namespace Vrf::VrfIdMap
