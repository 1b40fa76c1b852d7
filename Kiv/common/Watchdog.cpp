#include "Kiv/common/Watchdog.h"

#include "Zam/ActivityLock.h"

#include <chrono>
#include <thread>

namespace Kiv {

void allowWatchdog(U32& count) {
   constexpr U32 callsBetweenYields = 2000;
   if (count++ < callsBetweenYields) {
      return;
   }
   count = 0;
   if (Zam::ActivityLock::held()) {
      Zam::ScopedUnlock const unlocked;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
   }
}

}  // namespace Kiv
