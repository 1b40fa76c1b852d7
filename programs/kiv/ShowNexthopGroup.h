#pragma once

#include "programs/kiv/Command.h"

namespace kiv {

std::span<Clause const> nexthopGroupClauses();

ExitStatus showNexthopGroup(Request const& request);

}  // namespace kiv
