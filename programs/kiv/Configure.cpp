#include "programs/kiv/Configure.h"

#include "programs/command/Kinds.h"
#include "programs/command/Parser.h"
#include "programs/command/Session.h"
#include "programs/kiv/Commands.h"
#include "state/ConfigFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
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

// All of them, before anything is locked: they may come from a terminal.
std::vector<std::string> linesOf(std::string const& file) {
   std::unique_ptr<std::FILE, int (*)(std::FILE*)> const in(std::fopen(file.c_str(), "re"), &std::fclose);
   std::string text;
   std::array<char, 4096> piece;
   while (std::size_t const read = in ? std::fread(piece.data(), 1, piece.size(), in.get()) : 0) {
      text.append(piece.data(), read);
   }
   endWhenInterrupted();
   if (!in || std::ferror(in.get()) != 0) {
      throw std::runtime_error(file + ": " + std::strerror(errno));
   }
   std::istringstream stream(text);
   std::vector<std::string> lines;
   for (std::string line; std::getline(stream, line);) {
      lines.push_back(std::move(line));
   }
   return lines;
}

ExitStatus configureFromFile(Session& session, ConfigureArguments const& asked) {
   std::string const& stateDir = stateDirOf(session, "configure");
   std::vector<std::string> const lines = linesOf(asked.file);
   state::ConfigChange change(stateDir);
   for (std::size_t i = 0; i < lines.size(); ++i) {
      endWhenInterrupted();
      auto const place = [&] { return asked.file + ": line " + std::to_string(i + 1) + ": "; };
      auto const words = wordsOf(lines[i]);
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
   commit(change);
   return ExitStatus::ok;
}

constexpr auto configureClauses = clauses(clause<&ConfigureArguments::file, FileName>(
    {.keyword = "", .help = "file of ip route, ipv6 route, no and clear commands, one a line", .required = true}));

constexpr std::array configureTable{
    command<configureFromFile>("configure", "carry out all commands of a file, or none", configureClauses)};

}  // namespace

ExitStatus changeConfiguration(Session& session, Request const& request) {
   state::ConfigChange change(stateDirOf(session, request.command.words));
   request.configure(change.state());
   commit(change);
   return ExitStatus::ok;
}

std::span<Command const> configureCommands() {
   return configureTable;
}

}  // namespace kiv
