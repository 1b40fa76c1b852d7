#pragma once

#include "state/Inputs.h"

#include <string>

namespace kiv {

// What a follower keeps a directory equal to, and tells.
struct Following {
   bool kernel = false;
   bool print = false;  // each change
};

// Where the state of the box is read from.
enum class SourceKind { stateDir, snapshot, kernel };

struct Source {
   SourceKind kind = SourceKind::kernel;
   std::string path{};    // of the directory or the file
   bool isNamed = false;  // by the user, for this command
   Following following{};
};

// The tables and entities of the box that a command is about.
state::Inputs inputsFrom(Source const& source);

}  // namespace kiv
