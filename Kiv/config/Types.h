#pragma once

namespace Kiv {

// Makes the types of configuration support known to the type runtime.
void registerConfigTypes();

}  // namespace Kiv
