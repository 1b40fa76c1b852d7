#pragma once

#include "programs/kiv/Options.h"
#include "state/Inputs.h"

namespace kiv {

// The tables and entities of the box that a command is about.
state::Inputs inputsFrom(Source const& source);

}  // namespace kiv
