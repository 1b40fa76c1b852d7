#pragma once

#include "programs/kiv/ExitStatus.h"

#include <string_view>

namespace kiv {

// One line on stderr, "kiv: message"; whatever is in the message, it stays one line.
void report(std::string_view message);

// A whole text to stdout.
ExitStatus writeOutput(std::string_view text);

// What the errno of a failed write means for the user: nothing for a reader that went away.
ExitStatus outputFailed(int error);

}  // namespace kiv
