#include "programs/kiv/Program.h"

#include "Hive/EntityManager.h"
#include "Vault/Error.h"
#include "Zam/Error.h"
#include "cliprint/Interrupt.h"
#include "programs/kiv/CommandParser.h"
#include "programs/kiv/Commands.h"
#include "programs/kiv/Help.h"
#include "programs/kiv/Output.h"

#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

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

void installHandlers() {
   ::signal(SIGPIPE, SIG_IGN);  // a reader that went away is an error of the write
   ::signal(SIGABRT, onAbort);
   ::signal(SIGBUS, onBusError);
   cliprint::interruptHandlerIs(true);
}

ExitStatus runCommand(std::span<char const* const> arguments) {
   char const* const stateDir = std::getenv("KIV_STATE");
   Options const options = parseOptions(arguments, stateDir != nullptr ? stateDir : "");
   if (options.help) {
      return writeOutput(helpText(commands()));
   }
   if (!options.words.empty() && options.words.back() == "?") {
      return writeOutput(nextText(commands(), {options.words.begin(), options.words.end() - 1}));
   }
   Request const request = parseCommand(commands(), options);
   return request.command.run(request);
}

ExitStatus failed(ExitStatus status, std::string_view message) {
   report(message);
   return status;
}

ExitStatus run(std::span<char const* const> arguments) {
   try {
      return runCommand(arguments);
   } catch (cliprint::SigIntException const&) {
      return ExitStatus::interrupted;
   } catch (UsageError const& error) {
      return failed(ExitStatus::usage, error.what());
   } catch (Vault::MountError const& error) {
      return failed(ExitStatus::internal, error.what());
   } catch (Vault::CorruptionError const& error) {
      return failed(ExitStatus::internal, error.what());
   } catch (Zam::RangeError const& error) {
      return failed(ExitStatus::internal, std::string("shared tables: value out of range: ") + error.what());
   } catch (std::runtime_error const& error) {
      return failed(ExitStatus::refused, error.what());
   } catch (std::bad_alloc const&) {
      return failed(ExitStatus::internal, "memory: none left");
   } catch (std::exception const& error) {
      return failed(ExitStatus::internal, std::string("internal fault: ") + error.what());
   }
}

}  // namespace

int runProgram(std::span<char const* const> arguments) {
   installHandlers();
   return static_cast<int>(run(arguments));
}

}  // namespace kiv
