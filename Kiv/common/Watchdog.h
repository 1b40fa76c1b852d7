#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"

namespace Kiv {

// Called once per item from long loops, with a count that starts at 0: every 2001st call lets the other activities of
// the process, its watchdog among them, run for a millisecond. A thread that does not hold the activity lock keeps
// nobody waiting and goes straight on.
KIV_EXPORT void allowWatchdog(U32& count);

}  // namespace Kiv
