#include "tests/programs/kiv/ProgramRun.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace testsupport {

namespace fs = std::filesystem;

ProgramRun::ProgramRun() : dir_((fs::temp_directory_path() / "kivTest.XXXXXX").string()) {
   std::string name = dir_.string();
   if (::mkdtemp(name.data()) == nullptr) {
      std::abort();
   }
   dir_ = name;
   ::setenv("KIV", KIV_PROGRAM, 1);
   ::setenv("DEMO", KIV_SOURCE_DIR "/examples/demo.json", 1);
   ::setenv("ROUTES", KIV_SOURCE_DIR "/examples/routes.json", 1);
   ::setenv("DIR", name.c_str(), 1);
   ::unsetenv("KIV_STATE");
}

ProgramRun::~ProgramRun() {
   fs::remove_all(dir_);
}

Finished ProgramRun::operator()(std::string const& script) const {
   std::string const file = (dir_ / "script").string();
   std::ofstream(file) << script << '\n';
   int const status = std::system(("bash " + file + " >" + file + ".out 2>" + file + ".err").c_str());
   return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, fileText(file + ".out"), fileText(file + ".err")};
}

std::string fileText(fs::path const& file) {
   std::ifstream in(file, std::ios::binary);
   return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace testsupport
