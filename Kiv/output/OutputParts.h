#pragma once

#include "cliprint/RendererV2.h"

// What the route table and the host route table both print around their routes.
namespace Kiv {

inline constexpr cliprint::OwnText warningSeparator{"======================================================\n"};

// Opens the box of the hardware warning; the caller closes it with the separator.
void addHardwareWarning(cliprint::RendererV2& renderer);

// Nothing for a request time of 0. "quantify" counts from the request, so it includes the creation of the sorter.
void addTimings(cliprint::RendererV2& renderer, double requestTime, double printStartTime);

}  // namespace Kiv
