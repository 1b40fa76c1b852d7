#include "programs/kiv/Load.h"

#include "state/Snapshot.h"
#include "state/StateDir.h"

namespace kiv {

ExitStatus loadSnapshot(Request const& request) {
   std::string const& stateDir = request.options.stateDir;
   if (stateDir.empty()) {
      throw UsageError("load: command line: --state DIR should say where to");
   }
   state::writeStateDir(state::readSnapshot(*request.value("SNAPSHOT")), stateDir);
   return ExitStatus::ok;
}

}  // namespace kiv
