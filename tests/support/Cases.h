#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace testsupport {

// Tables of cases are files beside the tests: a line "what goes in => what comes out" each, under its "[section]"; '#'
// begins a remark. Throws when the file, below tests/, has none for the section.
std::vector<std::pair<std::string, std::string>> casesOf(std::string_view file, std::string_view section);

}  // namespace testsupport
