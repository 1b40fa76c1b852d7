#include "programs/command/Source.h"

#include "programs/kernel/KernelState.h"
#include "state/Snapshot.h"

namespace kiv {

state::Inputs inputsFrom(Source const& source, kernel::Need const& need) {
   if (source.mounted) {
      return *source.mounted;
   }
   switch (source.kind) {
      case SourceKind::stateDir:
         return state::mountStateDir(source.path);
      case SourceKind::snapshot:
         return state::mountPrivately(state::readSnapshot(source.path));
      case SourceKind::kernel:
         break;
   }
   return state::mountPrivately(kernel::readMachine(need));
}

}  // namespace kiv
