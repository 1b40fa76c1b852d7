#pragma once

#include "Zam/Int.h"

#include <string>

namespace kiv {

// How long ago a moment of the system's clock was, in nanoseconds: "0.4 s", "12 s", "3 min 5 s", "2 d 4 h".
std::string ageText(U64 moment);
// The moment in UTC: "2024-01-31T12:00:00.123Z".
std::string momentText(U64 moment);

}  // namespace kiv
