#include "programs/kiv/Configure.h"

#include "Hive/EntityManager.h"
#include "cliprint/Interrupt.h"
#include "programs/kiv/CommandParser.h"
#include "programs/kiv/Commands.h"
#include "state/ConfigFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace kiv {
namespace {

std::string const& stateDirOf(Request const& request) {
   Source const& source = request.options.source;
   if (source.kind != SourceKind::stateDir) {
      throw UsageError(std::string(request.command.words) +
                       ": command line: --state DIR should say whose configuration");
   }
   return source.path;
}

void commit(state::ConfigChange& change) {
   change.writeBeside();
   if (cliprint::interrupted()) {
      throw cliprint::SigIntException();
   }
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

void carryOut(state::State& state, Options options) {
   Request const request = parseCommand(commands(), options);
   if (request.command.configure == nullptr) {
      throw UsageError('"' + std::string(request.command.words) + "\": is no command of the configuration");
   }
   request.command.configure(state, request);
}

}  // namespace

ExitStatus changeConfiguration(Request const& request) {
   state::ConfigChange change(stateDirOf(request));
   request.command.configure(change.state(), request);
   commit(change);
   return ExitStatus::ok;
}

ExitStatus configureFromFile(Request const& request) {
   std::string const& file = *request.value("FILE");
   std::ifstream in(file);
   if (!in) {
      throw std::runtime_error(file + ": " + std::strerror(errno));
   }
   state::ConfigChange change(stateDirOf(request));
   std::size_t number = 0;
   for (std::string line; std::getline(in, line);) {
      ++number;
      auto const place = [&] { return file + ": line " + std::to_string(number) + ": "; };
      Options options;
      options.words = wordsOf(line);
      if (options.words.empty()) {
         continue;
      }
      try {
         carryOut(change.state(), std::move(options));
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

}  // namespace kiv
