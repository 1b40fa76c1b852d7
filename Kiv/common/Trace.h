#pragma once

#include "Zam/Export.h"
#include "Zam/Trace.h"

namespace Kiv {

// The source name of the library's traces and assertions.
inline constexpr char const* traceSource = "Kiv/CliSupport";

KIV_EXPORT extern Zam::TraceHandle const trace;

}  // namespace Kiv
