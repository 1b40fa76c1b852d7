#pragma once

namespace Kiv {

// Registers the types of the platform that the library takes and hands over.
void registerPlatformTypes();

}  // namespace Kiv
