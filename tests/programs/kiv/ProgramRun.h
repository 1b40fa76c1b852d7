#pragma once

#include "support/Cases.h"
#include "support/Testing.h"

#include <filesystem>

namespace testsupport {

// What a shell command left: its exit status and outputs. "$KIV" is the program under test, "$DEMO",
// "$ROUTES" and "$CORNERS" are snapshots, "$DIR" a directory of the caller's own.
struct Finished {
   int status = -1;
   std::string out{};
   std::string err{};
};

class ProgramRun {
 public:
   ProgramRun();
   Finished operator()(std::string const& script) const;
   TempDir const& dir() const { return dir_; }

 private:
   TempDir dir_;
};

std::string fileText(std::filesystem::path const& file);

// The lines of a section of cases.txt.
inline auto casesOf(std::string_view section) {
   return casesOf("programs/kiv/cases.txt", section);
}

}  // namespace testsupport
