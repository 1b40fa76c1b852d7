#include "Kiv/CliSupport.h"
#include "Vault/TableFile.h"
#include "Zam/Ptr.h"
#include "cliprint/Interrupt.h"
#include "python/src/Errors.h"
#include "python/src/Objects.h"
#include "python/src/Routes.h"
#include "python/src/State.h"

// The extension behind the package kiv. Entities count by atomic numbers, for Python may hold them on any thread.
PYBIND11_MODULE(_kiv, module) {
   Zam::PtrInterface::threadSafeCountIs(true);
   Kiv::registerTypes();
   Vault::TableFile::interruptedIs(cliprint::interrupted);
   kivPython::watchDamage();
   kivPython::defineErrors(module);
   kivPython::defineObjects(module);
   kivPython::defineRoutes(module);
   kivPython::defineState(module);
}
