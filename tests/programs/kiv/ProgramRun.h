#pragma once

#include <filesystem>
#include <string>

namespace testsupport {

// What a shell command left: its exit status and outputs. "$KIV" is the program under test, "$DEMO" and
// "$ROUTES" the example snapshots, "$DIR" a directory of the caller's own.
struct Finished {
   int status = -1;
   std::string out{};
   std::string err{};
};

class ProgramRun {
 public:
   ProgramRun();
   ~ProgramRun();
   ProgramRun(ProgramRun const&) = delete;
   ProgramRun& operator=(ProgramRun const&) = delete;

   Finished operator()(std::string const& script) const;
   std::filesystem::path const& dir() const { return dir_; }

 private:
   std::filesystem::path dir_;
};

std::string fileText(std::filesystem::path const& file);

}  // namespace testsupport
