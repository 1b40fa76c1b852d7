#include "programs/kiv/Load.h"

#include "programs/command/Kinds.h"
#include "programs/command/Session.h"
#include "state/Snapshot.h"
#include "state/StateDir.h"

namespace kiv {
namespace {

struct LoadArguments {
   std::string snapshot{};
};

ExitStatus loadSnapshot(Session& session, LoadArguments const& asked) {
   std::string const& stateDir = session.stateDir("load", "where to");
   if (!session.source().isNamed) {
      throw UsageError("load: command line: --state DIR should say where to");
   }
   state::writeStateDir(state::readSnapshot(asked.snapshot), stateDir);
   return ExitStatus::ok;
}

constexpr auto loadClauses = clauses(
    clause<&LoadArguments::snapshot, FileName>({.keyword = "",
                                                .parameter = "SNAPSHOT",
                                                .help = "file that describes the state of a box, see docs/snapshot.md",
                                                .required = true}));

struct GcArguments {
   std::string stateDir{};
};

ExitStatus removeLeftovers(Session& /*session*/, GcArguments const& asked) {
   state::removeLeftovers(asked.stateDir);
   return ExitStatus::ok;
}

constexpr auto gcClauses = clauses(clause<&GcArguments::stateDir, FileName>(
    {.keyword = "", .parameter = "DIR", .help = "the state directory beside which they lie", .required = true}));

constexpr auto loadTable = std::to_array<Command>({
    command<loadSnapshot>("load", "make the directory given with --state hold the state of a snapshot", loadClauses),
    command<removeLeftovers>("gc", "remove what killed loads and displays of this user left behind", gcClauses),
});

}  // namespace

std::span<Command const> loadCommands() {
   return loadTable;
}

}  // namespace kiv
