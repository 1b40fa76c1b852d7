#pragma once

#include "Zam/Int.h"

// How often this process has allocated memory so far.
U64 allocations() noexcept;
