#pragma once

#include "Zam/Export.h"

#include <atomic>
#include <exception>

// The user's interrupt (Ctrl-C). A signal handler, or the CLI that embeds the library, sets one flag; the next call on
// any renderer then throws a SigIntException, and so does a call that was blocked in a write. The flag stays set until
// resetInterrupted(), so nothing more gets out in between. Setting and reading the flag is safe in a signal handler and
// from any thread.
namespace cliprint {

class KIV_EXPORT SigIntException : public std::exception {
 public:
   ~SigIntException() override;
   char const* what() const noexcept override;
};

namespace detail {
KIV_EXPORT extern std::atomic<bool> interruptPending;
}

inline bool interrupted() noexcept {
   return detail::interruptPending.load(std::memory_order_relaxed);
}
inline void interruptedIs(bool interrupted) noexcept {
   detail::interruptPending.store(interrupted, std::memory_order_relaxed);
}
inline void resetInterrupted() noexcept {
   interruptedIs(false);
}

// Makes SIGINT set the flag (true), or puts back the handler that was there before (false). A write that waits for its
// reader is woken. Call it from one thread; further calls with the same value change nothing.
KIV_EXPORT void interruptHandlerIs(bool installed) noexcept;

}  // namespace cliprint
