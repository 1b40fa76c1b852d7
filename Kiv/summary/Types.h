#pragma once

namespace Kiv {

// Makes the route summaries known to the type runtime.
void registerSummaryTypes();

}  // namespace Kiv
