#include "support/Cases.h"

#include <fstream>
#include <stdexcept>

namespace testsupport {

std::vector<std::pair<std::string, std::string>> casesOf(std::string_view file, std::string_view section) {
   std::vector<std::pair<std::string, std::string>> cases;
   std::ifstream in(KIV_SOURCE_DIR "/tests/" + std::string(file));
   bool within = false;
   for (std::string line; std::getline(in, line);) {
      auto const arrow = line.find(" =>");
      if (line.starts_with('[') && line.ends_with(']')) {
         within = line.substr(1, line.size() - 2) == section;
      } else if (within && arrow != std::string::npos && !line.starts_with('#')) {
         cases.emplace_back(line.substr(0, arrow), line.size() > arrow + 4 ? line.substr(arrow + 4) : "");
      }
   }
   return cases.empty() ? throw std::invalid_argument("no cases of " + std::string(section)) : cases;
}

}  // namespace testsupport
