#pragma once

#include "programs/kiv/Command.h"

namespace kiv {

ExitStatus showIpRoute(Request const& request);
ExitStatus showIpv6Route(Request const& request);

}  // namespace kiv
