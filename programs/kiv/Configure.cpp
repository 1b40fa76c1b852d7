#include "programs/kiv/Configure.h"

#include "programs/command/Kinds.h"
#include "programs/command/Parser.h"
#include "programs/command/Session.h"
#include "programs/kiv/Commands.h"
#include "state/ConfigFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace kiv {
namespace {

struct ConfigureArguments {
   std::string file{};
};

std::string const& stateDirOf(Session const& session, std::string_view command) {
   return session.stateDir(command, "whose configuration");
}

void commit(state::ConfigChange& change) {
   change.writeBeside();
   endWhenInterrupted();
   change.putInPlace();
}

// Lines that are empty or begin with "!" say nothing.
std::vector<std::string> wordsOf(std::string const& line) {
   std::istringstream in(line);
   std::vector<std::string> words;
   for (std::string word; in >> word;) {
      if (words.empty() && word.front() == '!') {
         break;
      }
      words.push_back(std::move(word));
   }
   return words;
}

void carryOut(state::State& state, std::vector<std::string> const& words) {
   Request const request = parseCommand(commands(), words);
   if (request.command.configure == nullptr) {
      throw UsageError('"' + std::string(request.command.words) + "\": is no command of the configuration");
   }
   request.configure(state);
}

ExitStatus configureFromFile(Session& session, ConfigureArguments const& asked) {
   std::string const& file = asked.file;
   std::ifstream in(file);
   if (!in) {
      throw std::runtime_error(file + ": " + std::strerror(errno));
   }
   state::ConfigChange change(stateDirOf(session, "configure"));
   std::size_t number = 0;
   for (std::string line; std::getline(in, line);) {
      ++number;
      endWhenInterrupted();
      auto const place = [&] { return file + ": line " + std::to_string(number) + ": "; };
      auto const words = wordsOf(line);
      if (words.empty()) {
         continue;
      }
      try {
         carryOut(change.state(), words);
      } catch (UsageError const& error) {
         throw UsageError(place() + error.what());
      } catch (std::exception const& error) {
         throw std::runtime_error(place() + error.what());
      }
   }
   if (in.bad()) {
      throw std::runtime_error(file + ": cannot be read to its end");
   }
   commit(change);
   return ExitStatus::ok;
}

constexpr auto configureClauses = clauses(clause<&ConfigureArguments::file, FileName>(
    {.keyword = "", .help = "file of ip route, ipv6 route, no and clear commands, one a line", .required = true}));

constexpr std::array table{
    command<configureFromFile>("configure", "carry out all commands of a file, or none", configureClauses)};

}  // namespace

ExitStatus changeConfiguration(Session& session, Request const& request) {
   state::ConfigChange change(stateDirOf(session, request.command.words));
   request.configure(change.state());
   commit(change);
   return ExitStatus::ok;
}

std::span<Command const> configureCommands() {
   return table;
}

}  // namespace kiv
