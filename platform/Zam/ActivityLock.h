#pragma once

#include "Zam/Export.h"

#include <mutex>

// The runtime's activity lock: whoever runs the library's code holds it, so that activities take turns. A long walk
// lets the others in with a ScopedUnlock. On a thread that does not hold the lock (a one-shot program has no other
// activities) ScopedUnlock does nothing.
namespace Zam {

class KIV_EXPORT ActivityLock {
 public:
   static void lock();
   static void unlock();
   // Whether the calling thread holds it.
   static bool held() noexcept;

 private:
   static std::mutex& mutex() noexcept;
};

class ScopedActivity {
 public:
   ScopedActivity() { ActivityLock::lock(); }
   ~ScopedActivity() { ActivityLock::unlock(); }
   ScopedActivity(ScopedActivity const&) = delete;
   ScopedActivity& operator=(ScopedActivity const&) = delete;
};

class ScopedUnlock {
 public:
   ScopedUnlock() : held_(ActivityLock::held()) {
      if (held_) {
         ActivityLock::unlock();
      }
   }
   ~ScopedUnlock() {
      if (held_) {
         ActivityLock::lock();
      }
   }
   ScopedUnlock(ScopedUnlock const&) = delete;
   ScopedUnlock& operator=(ScopedUnlock const&) = delete;

 private:
   bool held_;
};

}  // namespace Zam
