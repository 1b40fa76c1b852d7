#pragma once

#include "Zam/Export.h"

namespace Zam {

// Seconds on the platform clock, which never steps back; its zero has no meaning beyond this boot.
KIV_EXPORT double currentTime() noexcept;

}  // namespace Zam
