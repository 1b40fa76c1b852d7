#include "python/src/Calls.h"

#include "cliprint/Interrupt.h"

#include <pthread.h>

#include <csignal>

namespace kivPython {
namespace {

struct sigaction before;
bool installed = false;

void onInterrupt(int signal) {
   cliprint::interruptedIs(true);
   before.sa_handler(signal);
}

bool isMainThread() {
   static auto const main = static_cast<unsigned long>(
       PyLong_AsUnsignedLong(pybind11::module_::import("threading").attr("main_thread")().attr("ident").ptr()));
   return PyThread_get_thread_ident() == main;
}

}  // namespace

Interrupts::Interrupts() {
   if (installed || !isMainThread()) {
      return;
   }
   sigaction(SIGINT, nullptr, &before);
   if (before.sa_handler == SIG_IGN || before.sa_handler == SIG_DFL || (before.sa_flags & SA_SIGINFO) != 0) {
      return;  // Python is not told either
   }
   struct sigaction action = before;
   action.sa_handler = onInterrupt;
   sigaction(SIGINT, &action, nullptr);
   installed_ = installed = true;
}

Interrupts::~Interrupts() {
   if (installed_) {
      sigaction(SIGINT, &before, nullptr);
      installed = false;
      cliprint::resetInterrupted();
   }
}

}  // namespace kivPython
