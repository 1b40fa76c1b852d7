#include "programs/command/Parser.h"

#include "programs/command/Walk.h"

namespace kiv {

Request parseCommand(std::span<Command const> commands, std::vector<std::string> const& words) {
   Walk walk(commands, words);
   walk.run();
   Command const& command = walk.command();
   return {command, walk.takeArguments()};
}

}  // namespace kiv
