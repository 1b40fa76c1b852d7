#pragma once

#include "programs/kiv/Command.h"

namespace kiv {

// Makes the counters of nexthop groups start again: what they have counted becomes their snapshot, all at once.
ExitStatus clearCounters(Request const& request);

}  // namespace kiv
