#pragma once

namespace Kiv {

// Of the gateway of last resort.
enum class DefaultRouteState { notSet, reachable, notReachable };

}  // namespace Kiv
