#include "Zam/Clock.h"

#include <chrono>

namespace Zam {

double currentTime() noexcept {
   return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace Zam
