#include "cliprint/Interrupt.h"

#include <csignal>

namespace cliprint {

namespace detail {
std::atomic<bool> interruptPending{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");
}  // namespace detail

SigIntException::~SigIntException() = default;

char const* SigIntException::what() const noexcept {
   return "on user interrupt";
}

void interruptHandlerIs(bool installed) noexcept {
   static bool handling = false;
   static struct sigaction previous;
   if (installed == handling) {
      return;
   }
   handling = installed;
   if (!installed) {
      sigaction(SIGINT, &previous, nullptr);
      return;
   }
   sigaction(SIGINT, nullptr, &previous);
   if (previous.sa_handler == SIG_IGN) {
      return;  // whoever started the process wants it to go on
   }
   struct sigaction action {};
   action.sa_handler = [](int) { interruptedIs(true); };
   sigemptyset(&action.sa_mask);
   action.sa_flags = 0;  // no SA_RESTART: a blocked write must come back
   sigaction(SIGINT, &action, nullptr);
}

}  // namespace cliprint
