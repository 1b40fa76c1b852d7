#include "tests/programs/kiv/ProgramRun.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace testsupport {

ProgramRun::ProgramRun() {
   ::setenv("KIV", KIV_PROGRAM, 1);
   ::setenv("DEMO", KIV_SOURCE_DIR "/examples/demo.json", 1);
   ::setenv("ROUTES", KIV_SOURCE_DIR "/examples/routes.json", 1);
   ::setenv("STATIC", KIV_SOURCE_DIR "/examples/static.json", 1);
   ::setenv("CORNERS", KIV_SOURCE_DIR "/tests/programs/kiv/corners.json", 1);
   ::setenv("EDGES", KIV_SOURCE_DIR "/tests/programs/kiv/edges.json", 1);
   ::setenv("DIR", (dir_ / "").c_str(), 1);
   ::unsetenv("KIV_STATE");
}

Finished ProgramRun::operator()(std::string const& script) const {
   std::string const file = dir_ / "script";
   std::ofstream(file) << script << '\n';
   int const status = std::system(("bash " + file + " >" + file + ".out 2>" + file + ".err").c_str());
   return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, fileText(file + ".out"), fileText(file + ".err")};
}

std::string fileText(std::filesystem::path const& file) {
   std::ifstream in(file, std::ios::binary);
   return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace testsupport
