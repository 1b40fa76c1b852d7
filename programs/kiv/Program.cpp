#include "programs/kiv/Program.h"

#include "cliprint/Interrupt.h"
#include "programs/command/Help.h"
#include "programs/command/Parser.h"
#include "programs/command/Session.h"
#include "programs/kiv/Commands.h"
#include "programs/kiv/Options.h"
#include "state/LiveStatus.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>

namespace kiv {
namespace {

// A failed assertion has told why; its exit status is that of an internal fault.
void onAbort(int) {
   ::_exit(static_cast<int>(ExitStatus::internal));
}

// A table that somebody cut off while it was read, or memory that ran out under one that was written.
void onBusError(int) {
   constexpr std::string_view line = "kiv: shared memory: a table was cut off while it was in use, or memory is full\n";
   [[maybe_unused]] auto const ignored = ::write(STDERR_FILENO, line.data(), line.size());
   ::_exit(static_cast<int>(ExitStatus::internal));
}

volatile std::sig_atomic_t terminated = 0;

// Ends an output as an interrupt does; a second one ends the process, whatever it does.
void onTerminate(int) {
   terminated = 1;
   cliprint::interruptedIs(true);
}

void installTerminate() {
   struct sigaction action {};
   sigaction(SIGTERM, nullptr, &action);
   if (action.sa_handler == SIG_DFL) {
      action.sa_handler = onTerminate;
      action.sa_flags = static_cast<int>(SA_RESETHAND);  // no SA_RESTART: a blocked write must come back
      sigaction(SIGTERM, &action, nullptr);
   }
}

void installHandlers() {
   installTerminate();
   ::signal(SIGPIPE, SIG_IGN);  // a reader that went away is an error of the write
   ::signal(SIGABRT, onAbort);
   ::signal(SIGBUS, onBusError);
   ::signal(SIGXFSZ, SIG_IGN);  // so is a file that may not get larger
   cliprint::interruptHandlerIs(true);
   Session::watchTables();
}

constexpr std::string_view optionsText = R"(
Sources:
  --state DIR        a state directory; default: $KIV_STATE
  --snapshot FILE    a snapshot, without loading it anywhere
  --kernel           this machine's own forwarding
When none is given, /run/kiv while a follower keeps it, and else the kernel.

Of follow:
  --fpm [PLACE]      keep the routes of a routing daemon that connects to [ADDRESS:]PORT, 127.0.0.1:2620 unless said
  --kernel           keep the kernel's, as it does unless told otherwise
  --print            write each change as a line of JSON

Options:
  --json             write JSON, as "| json" at the end of a command does
  --help             this text

Words may be shortened while only one fits: kiv sh ip ro; keywords come before the names of protocols. What follows a
command may stand in any order; in commands that change the configuration it is spelled out. A "?" at the end tells what
may follow.

Exit status: 0 done; 1 refused, or bad input; 2 wrong command or option; 3 damaged tables or an internal fault;
4 output not written; 130 interrupted; 143 terminated.
)";

std::string wholeHelp() {
   return "usage: kiv [--state DIR | --snapshot FILE | --kernel] [--json] COMMAND\n\nCommands:\n" +
          helpText(commands()) + std::string(optionsText);
}

ExitStatus help(Session& session, NoArguments const&) {
   return session.write(wholeHelp());
}

constexpr std::array programTable{command<help>("help", "the commands and options", noClauses)};

ExitStatus runCommand(Session& session, Options const& options) {
   bool const asksWhatMayFollow = !options.words.empty() && options.words.back() == "?";
   if (session.isJson() && (options.help || asksWhatMayFollow)) {
      throw UsageError(options.help ? "\"--help\": has no JSON" : "\"?\": has no JSON");
   }
   if (options.help) {
      return session.write(wholeHelp());
   }
   if (asksWhatMayFollow) {
      auto const names = [&](NamesQuery const& query) { return session.names(query); };
      return session.write(nextText(commands(), {options.words.begin(), options.words.end() - 1}, names));
   }
   return parseCommand(commands(), options.words).run(session);
}

// Where it is not said: what the environment names, what a follower of this network namespace keeps, or else the
// kernel.
Source usualSource() {
   constexpr char const* followed = "/run/kiv";
   if (char const* const named = std::getenv("KIV_STATE"); named != nullptr && *named != '\0') {
      return {.kind = SourceKind::stateDir, .path = named};
   }
   auto const live = state::liveStateOf(followed);
   if (live && live->isKept && live->status.networkNamespace == state::networkNamespace()) {
      return {.kind = SourceKind::stateDir, .path = followed, .isImplied = true};
   }
   return {};
}

ExitStatus run(std::span<char const* const> arguments) {
   Options options;
   ExitStatus const status = Session({}, false).carryOut([&] {
      options = parseOptions(arguments, usualSource());
      return ExitStatus::ok;
   });
   if (status != ExitStatus::ok) {
      return status;
   }
   Session session(options.source, options.json);
   ExitStatus const ended = session.carryOut([&] { return runCommand(session, options); });
   return ended == ExitStatus::interrupted && terminated != 0 ? ExitStatus::terminated : ended;
}

}  // namespace

std::span<Command const> programCommands() {
   return programTable;
}

int runProgram(std::span<char const* const> arguments) {
   installHandlers();
   return static_cast<int>(run(arguments));
}

}  // namespace kiv
