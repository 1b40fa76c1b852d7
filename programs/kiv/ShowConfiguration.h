#pragma once

#include "programs/kiv/Command.h"

// The configured static routes: as the commands that configure them, and as a table.
namespace kiv {

ExitStatus showRunningIpRoutes(Request const& request);
ExitStatus showRunningIpv6Routes(Request const& request);
ExitStatus showIpStaticRoutes(Request const& request);
ExitStatus showIpv6StaticRoutes(Request const& request);

}  // namespace kiv
