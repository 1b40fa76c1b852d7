#pragma once

#include "Zam/Int.h"

#include <pybind11/pybind11.h>

#include <mutex>

namespace kivPython {

// While one lives, Ctrl-C also ends what the library does; made on the main thread, for Python tells no other one. What
// Python does about the signal it does afterwards. Needs the interpreter's lock, as does its end.
class Interrupts {
 public:
   Interrupts();
   ~Interrupts();
   Interrupts(Interrupts const&) = delete;
   Interrupts& operator=(Interrupts const&) = delete;

 private:
   bool installed_ = false;
};

// Runs what may take long: without the interpreter's lock, one thread at a time by the mutex of what it is about, and
// until an interrupt.
template <class Function>
auto longCall(std::mutex& mutex, Function const& function) {
   Interrupts const interrupts;
   pybind11::gil_scoped_release const released;
   std::lock_guard const taken(mutex);
   return function();
}

}  // namespace kivPython
