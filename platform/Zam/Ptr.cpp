#include "Zam/Ptr.h"

namespace Zam {

std::atomic<bool> PtrInterface::threadSafe_{false};

PtrInterface::~PtrInterface() = default;

std::size_t PtrInterface::notifieeList() const noexcept {
   return 0;
}

void PtrInterface::hasNotificationActiveIs(bool active) noexcept {
   notificationActive_ = active;
}

void PtrInterface::zeroReferencesIs() const noexcept {
   delete this;
}

}  // namespace Zam
