#include "python/src/State.h"

#include "Vault/Error.h"
#include "cliprint/Interrupt.h"
#include "programs/command/Parser.h"
#include "programs/command/Session.h"
#include "programs/kiv/Commands.h"
#include "programs/kiv/Vrfs.h"
#include "python/src/Calls.h"
#include "python/src/Errors.h"
#include "python/src/Routes.h"

#include <pybind11/stl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <system_error>

namespace py = pybind11;

namespace kivPython {
namespace {

// A file in memory, for what is written to a descriptor and read from a path.
class MemoryFile {
 public:
   MemoryFile() : descriptor_(::memfd_create("kiv", MFD_CLOEXEC)) {
      if (descriptor_ < 0) {
         throw std::system_error(errno, std::generic_category(), "memory file");
      }
   }
   ~MemoryFile() { ::close(descriptor_); }
   MemoryFile(MemoryFile const&) = delete;
   MemoryFile& operator=(MemoryFile const&) = delete;

   int descriptor() const { return descriptor_; }
   std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

   std::string content() const {
      struct stat status {};
      ::fstat(descriptor_, &status);
      std::string text(static_cast<std::size_t>(status.st_size), '\0');
      std::size_t done = 0;
      while (done < text.size()) {
         auto const got = ::pread(descriptor_, text.data() + done, text.size() - done, static_cast<off_t>(done));
         if (got <= 0) {
            throw std::system_error(errno, std::generic_category(), "memory file");
         }
         done += static_cast<std::size_t>(got);
      }
      return text;
   }
   void write(std::string_view text) const {
      while (!text.empty()) {
         auto const put = ::write(descriptor_, text.data(), text.size());
         if (put <= 0) {
            throw std::system_error(errno, std::generic_category(), "memory file");
         }
         text.remove_prefix(static_cast<std::size_t>(put));
      }
   }

 private:
   int descriptor_;
};

// Runs the function for a call from Python: damage that it met is an error, whatever it made.
template <class Function>
auto guarded(std::mutex& mutex, Function const& function) {
   return longCall(mutex, [&] {
      forgetDamage();
      auto result = function();
      throwDamage();
      return result;
   });
}

[[noreturn]] void throwFailed(kiv::ExitStatus status, std::string message) {
   if (status == kiv::ExitStatus::interrupted) {
      throw cliprint::SigIntException();
   }
   while (!message.empty() && message.back() == '\n') {
      message.pop_back();
   }
   if (status == kiv::ExitStatus::internal) {
      throw Vault::CorruptionError(message);
   }
   throw std::runtime_error(message);
}

}  // namespace

State::State(kiv::Source source) : source_(std::move(source)) {
   guarded(mutex_, [this] {
      mount();
      return true;
   });
}

// A table that is damaged is told by who asks for what is in it.
void State::mount() {
   source_.mounted = nullptr;
   auto inputs = std::make_shared<state::Inputs>(kiv::inputsFrom(source_));
   try {
      inputs->allMounted();
   } catch (Vault::MountError const&) {
      forgetDamage();
   }
   source_.mounted = std::move(inputs);
}

std::string State::carriedOut(std::vector<std::string> const& words, bool asModel) const {
   kiv::Request const request = kiv::parseCommand(kiv::commands(), words);
   if (asModel && !request.command.hasModel) {
      throw kiv::UsageError('"' + std::string(request.command.words) + "\": has no model, only text");
   }
   MemoryFile const output;
   MemoryFile const errors;
   kiv::Session session(source_, asModel, output.descriptor(), errors.descriptor());
   kiv::ExitStatus const status = request.run(session);
   return status == kiv::ExitStatus::ok ? output.content() : (throwFailed(status, errors.content()), "");
}

std::string State::output(std::vector<std::string> const& words, bool asModel) {
   return guarded(mutex_, [&] { return carriedOut(words, asModel); });
}

py::object State::routes(std::vector<std::string> const& words, bool addresses) {
   return routesOf(guarded(mutex_,
                           [&] {
                              auto inputs = *source_.mounted;
                              return selectedBy(inputs, kiv::parseCommand(kiv::commands(), words));
                           }),
                   addresses);
}

std::vector<std::string> State::vrfs() {
   return guarded(mutex_, [this] {
      std::vector<std::string> names;
      for (auto const& vrf : kiv::vrfsInOrder(*source_.mounted)) {
         names.push_back(vrf.name.bytes());
      }
      return names;
   });
}

void State::configure(std::string const& lines) {
   if (source_.kind != kiv::SourceKind::stateDir) {
      throw std::runtime_error("only a state directory has a configuration that can be changed");
   }
   guarded(mutex_, [&] {
      MemoryFile const commands;
      commands.write(lines);
      carriedOut({"configure", commands.path()}, false);
      mount();
      return true;
   });
}

void defineState(py::module_& module) {
   py::enum_<kiv::SourceKind>(module, "_SourceKind")
       .value("directory", kiv::SourceKind::stateDir)
       .value("snapshot", kiv::SourceKind::snapshot)
       .value("kernel", kiv::SourceKind::kernel);
   py::class_<State>(module, "_State")
       .def(py::init([](kiv::SourceKind kind, std::string path) {
          return std::make_unique<State>(kiv::Source{.kind = kind, .path = std::move(path), .isNamed = true});
       }))
       .def("output", [](State& state, std::vector<std::string> const& words,
                         bool asModel) { return py::bytes(state.output(words, asModel)); })
       .def("routes", &State::routes)
       .def("vrfs", &State::vrfs)
       .def("configure", &State::configure)
       .def("path", &State::path);
}

}  // namespace kivPython
