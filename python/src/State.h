#pragma once

#include "programs/command/Source.h"

#include <pybind11/pybind11.h>

#include <mutex>
#include <string>
#include <vector>

namespace kivPython {

// The state of a box as Python holds it: mounted once, so that it stays what it is whatever becomes of where it came
// from. Threads take turns with it, and none of them keeps the interpreter waiting.
class State {
 public:
   explicit State(kiv::Source source);

   // What the command prints.
   std::string output(std::vector<std::string> const& words, bool asModel);
   pybind11::object routes(std::vector<std::string> const& words, bool addresses);
   std::vector<std::string> vrfs();
   // All commands of the configuration, one a line, or none; then what changed is mounted.
   void configure(std::string const& lines);

   std::string const& path() const { return source_.path; }

 private:
   std::string carriedOut(std::vector<std::string> const& words, bool asModel) const;
   void mount();

   std::mutex mutex_;
   kiv::Source source_;
};

void defineState(pybind11::module_& module);

}  // namespace kivPython
