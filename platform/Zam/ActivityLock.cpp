#include "Zam/ActivityLock.h"

namespace Zam {

namespace {
thread_local bool heldHere = false;
}

std::mutex& ActivityLock::mutex() noexcept {
   static std::mutex mutex;
   return mutex;
}

void ActivityLock::lock() {
   mutex().lock();
   heldHere = true;
}

void ActivityLock::unlock() {
   heldHere = false;
   mutex().unlock();
}

bool ActivityLock::held() noexcept {
   return heldHere;
}

}  // namespace Zam
