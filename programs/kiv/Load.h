#pragma once

#include "programs/kiv/Command.h"

namespace kiv {

ExitStatus loadSnapshot(Request const& request);

}  // namespace kiv
