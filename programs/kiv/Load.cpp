#include "programs/kiv/Load.h"

#include "programs/state/StateWriter.h"

namespace kiv {

ExitStatus loadSnapshot(Request const& request) {
   std::string const& stateDir = request.options.stateDir;
   if (stateDir.empty()) {
      throw UsageError("load: command line: --state DIR should say where to");
   }
   auto const document = state::JsonDocument::load(*request.value("SNAPSHOT"));
   state::writeStateDir(state::readSnapshot(document), stateDir);
   return ExitStatus::ok;
}

}  // namespace kiv
