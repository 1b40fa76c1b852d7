#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace kiv {

// The command line is none of this program's; one line that names the word, where it is and what could stand there.
class UsageError : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
};

// Where the state of the box is read from.
enum class SourceKind { stateDir, snapshot, kernel };

struct Source {
   SourceKind kind = SourceKind::kernel;
   std::string path{};  // of the directory or the file
};

// Everything on the command line. Options may stand anywhere; "--" ends them.
struct Options {
   std::vector<std::string> words{};  // of the command, without the final "| json"
   std::string stateDir{};            // as given with --state, which is also where snapshots are loaded to
   Source source{};
   bool json = false;
   bool help = false;
};

// `defaultStateDir` is used when no source is given; empty for the machine's own kernel. Throws UsageError.
Options parseOptions(std::span<char const* const> arguments, std::string const& defaultStateDir);

}  // namespace kiv
