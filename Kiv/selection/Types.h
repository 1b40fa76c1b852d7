#pragma once

namespace Kiv {

// Makes the types of this folder known to the type runtime.
void registerSelectionTypes();

}  // namespace Kiv
