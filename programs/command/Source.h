#pragma once

#include "programs/kernel/Need.h"
#include "state/Inputs.h"

#include <memory>
#include <optional>
#include <string>

namespace kiv {

// What a follower keeps a directory equal to, and tells.
struct Following {
   bool kernel = false;
   bool print = false;                // each change
   std::optional<std::string> fpm{};  // where a routing daemon connects; empty for the usual place
};

// Where the state of the box is read from.
enum class SourceKind { stateDir, snapshot, kernel };

struct Source {
   SourceKind kind = SourceKind::kernel;
   std::string path{};      // of the directory or the file
   bool isNamed = false;    // by the user, for this command
   bool isImplied = false;  // nobody named it, here or in the environment
   Following following{};
   // What was mounted from there before, for those who ask one state several times; null to mount it now.
   std::shared_ptr<state::Inputs const> mounted{};
};

// The tables and entities of the box that a command is about.
state::Inputs inputsFrom(Source const& source, kernel::Need const& need = {});

}  // namespace kiv
