#include "programs/command/Session.h"

#include "Hive/EntityManager.h"
#include "Vault/Error.h"
#include "Vault/TableFile.h"
#include "Zam/Error.h"
#include "cliprint/CliPrintBuffer.h"
#include "cliprint/Interrupt.h"
#include "cliprint/PlainText.h"
#include "programs/command/Age.h"
#include "programs/command/Errors.h"
#include "state/ConfigFile.h"
#include "state/LiveStatus.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

namespace kiv {
namespace {

constexpr std::size_t maxLine = 1024;

// The first one that the running command met.
std::string damage;

void damageIs(std::string_view message) {
   if (damage.empty()) {
      damage = message;
   }
}

ExitStatus failed(Session const& session, ExitStatus status, std::string_view message) {
   session.report(message);
   return status;
}

ExitStatus guarded(Session const& session, std::function<ExitStatus()> const& command) {
   try {
      return command();
   } catch (cliprint::SigIntException const&) {
      return ExitStatus::interrupted;
   } catch (UsageError const& error) {
      return failed(session, ExitStatus::usage, error.what());
   } catch (Vault::MountError const& error) {
      return failed(session, ExitStatus::internal, error.what());
   } catch (Vault::CorruptionError const& error) {
      return failed(session, ExitStatus::internal, error.what());
   } catch (Zam::RangeError const& error) {
      return failed(session, ExitStatus::internal, std::string("shared tables: value out of range: ") + error.what());
   } catch (std::runtime_error const& error) {
      return failed(session, ExitStatus::refused, error.what());
   } catch (std::bad_alloc const&) {
      return failed(session, ExitStatus::internal, "memory: none left");
   } catch (std::exception const& error) {
      return failed(session, ExitStatus::internal, std::string("internal fault: ") + error.what());
   }
}

}  // namespace

void Session::watchTables() {
   Vault::TableFile::interruptedIs(cliprint::interrupted);
   Vault::TableFile::damageReporterIs(damageIs);
   state::waitTellerIs([](std::string_view line) { Session({}, false).report(line); });
}

ExitStatus Session::carryOut(std::function<ExitStatus()> const& command) {
   damage.clear();
   ExitStatus const status = guarded(*this, command);
   cliprint::resetInterrupted();
   if (damage.empty() || status == ExitStatus::internal) {
      return status;
   }
   report(damage);
   return status == ExitStatus::ok ? ExitStatus::internal : status;
}

std::string const& Session::stateDir(std::string_view command, std::string_view toSay) const {
   if (source_.kind != SourceKind::stateDir || source_.isImplied) {
      throw UsageError(std::string(command) + ": command line: --state DIR should say " + std::string(toSay));
   }
   return source_.path;
}

state::Inputs Session::inputs(kernel::Need need) const {
   if (source_.kind == SourceKind::stateDir) {
      if (auto const live = state::liveStateOf(source_.path); live && !live->isKept) {
         report(source_.path + ": nobody has kept this state for " + ageText(live->status.lastSeen));
      }
   }
   need.tell = [this](std::string_view line) { report(line); };
   return inputsFrom(source_, need);
}

std::vector<Name> Session::names(NamesQuery const& query) const {
   if (query.named == Named::nothing || query.named == Named::file) {
      return query.named == Named::file ? fileNames(query.partial) : std::vector<Name>();
   }
   try {
      state::Inputs read = inputsFrom(source_);
      return namesIn(read, query);
   } catch (std::exception const&) {
      return {};
   }
}

ExitStatus Session::write(std::string_view text) const {
   cliprint::CliPrintBuffer buffer(output_);
   while (!text.empty()) {
      auto const line = text.substr(0, text.find('\n'));
      cliprint::isPrintableAscii(line) ? buffer.append(line) : buffer.append(cliprint::plainText(line));
      text.remove_prefix(line.size());
      buffer.append(text.substr(0, 1));
      text.remove_prefix(std::min<std::size_t>(text.size(), 1));
   }
   buffer.ioflush();
   return ended(cliprint::interrupted() ? EINTR : buffer.error());
}

ExitStatus Session::ended(int error) const {
   if (error == 0 || error == EINTR) {
      return error == 0 ? ExitStatus::ok : ExitStatus::interrupted;
   }
   if (error != EPIPE) {
      report((output_ == STDOUT_FILENO ? "standard output: " : "output: ") + std::string(std::strerror(error)));
   }
   return ExitStatus::outputFailed;
}

void Session::report(std::string_view message) const {
   std::string const line = "kiv: " + cliprint::plainText(message, maxLine - std::strlen("kiv: \n")) + '\n';
   [[maybe_unused]] auto const ignored = ::write(errors_, line.data(), line.size());
}

}  // namespace kiv
