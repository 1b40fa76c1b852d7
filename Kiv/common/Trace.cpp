#include "Kiv/common/Trace.h"

namespace Kiv {

Zam::TraceHandle const trace(traceSource);

}  // namespace Kiv
