#include "Vault/GuardedMapping.h"

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <mutex>
#include <system_error>
#include <utility>

namespace Vault {

// Where a mapping is. Ranges are used again but never freed, so that the handler may walk their list at any time.
struct GuardedMapping::Range {
   std::atomic<std::uintptr_t> begin{0};  // 0 when it is nobody's
   std::atomic<std::uintptr_t> end{0};
   std::atomic<bool> torn{false};
   std::atomic<bool> writable{false};
   Range* next = nullptr;

   bool holds(std::uintptr_t address) const noexcept {
      std::uintptr_t const first = begin.load(std::memory_order_acquire);
      bool const inside = first != 0 && first <= address && address < end.load(std::memory_order_acquire);
      return inside && begin.load(std::memory_order_acquire) == first;
   }
};

bool GuardedMapping::torn() const noexcept {
   return range_ != nullptr && range_->torn.load(std::memory_order_relaxed);
}

namespace {

std::atomic<GuardedMapping::Range*> ranges{nullptr};
struct sigaction before {};

GuardedMapping::Range& freeRange() {
   for (auto* range = ranges.load(); range != nullptr; range = range->next) {
      if (range->begin.load() == 0) {
         return *range;
      }
   }
   auto* const range = new GuardedMapping::Range;
   range->next = ranges.load();
   ranges.store(range);
   return *range;
}

// As if there were no guard. By default the process ends: by the fault, which comes again, or by the signal that
// somebody sent.
void passOn(int signal, siginfo_t* info, void* context) {
   if ((before.sa_flags & SA_SIGINFO) != 0) {
      before.sa_sigaction(signal, info, context);
   } else if (before.sa_handler != SIG_DFL && before.sa_handler != SIG_IGN) {
      before.sa_handler(signal);
   } else {
      ::signal(signal, SIG_DFL);
      if (info->si_code <= 0) {
         ::raise(signal);
      }
   }
}

void onBusError(int signal, siginfo_t* info, void* context) {
   int const error = errno;
   if (info->si_code <= 0 || !mendedBusError(info->si_addr)) {
      passOn(signal, info, context);
   }
   errno = error;
}

void installOnce() {
   [[maybe_unused]] static bool const installed = [] {
      struct sigaction action {};
      action.sa_sigaction = onBusError;
      action.sa_flags = SA_SIGINFO | SA_ONSTACK;
      ::sigemptyset(&action.sa_mask);
      return ::sigaction(SIGBUS, &action, &before) == 0;
   }();
}

GuardedMapping::Range* guard(void* base, U64 bytes, bool writable) {
   static std::mutex mutex;
   std::scoped_lock const lock(mutex);
   installOnce();
   auto& range = freeRange();
   auto const begin = reinterpret_cast<std::uintptr_t>(base);
   range.torn.store(false);
   range.writable.store(writable);
   range.end.store(begin + bytes);
   range.begin.store(begin, std::memory_order_release);
   return &range;
}

}  // namespace

bool mendedBusError(void const* address) noexcept {
   auto const at = reinterpret_cast<std::uintptr_t>(address);
   for (auto* range = ranges.load(std::memory_order_acquire); range != nullptr; range = range->next) {
      if (range->holds(at)) {
         range->torn.store(true);
         int const rights = range->writable.load() ? PROT_READ | PROT_WRITE : PROT_READ;
         auto const size = static_cast<std::uintptr_t>(::getpagesize());
         auto* const page = reinterpret_cast<void*>(at & ~(size - 1));
         return ::mmap(page, size, rights, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0) != MAP_FAILED;
      }
   }
   return false;
}

GuardedMapping::GuardedMapping(int fd, U64 bytes, bool writable) : bytes_(bytes) {
   void* const base = ::mmap(nullptr, bytes, writable ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED, fd, 0);
   if (base == MAP_FAILED) {
      throw std::system_error(errno, std::generic_category(), "cannot be mapped");
   }
   base_ = static_cast<std::byte*>(base);
   range_ = guard(base, bytes, writable);
}

GuardedMapping::GuardedMapping(GuardedMapping&& other) noexcept
    : base_(std::exchange(other.base_, nullptr)),
      bytes_(other.bytes_),
      range_(std::exchange(other.range_, nullptr)) {}

GuardedMapping& GuardedMapping::operator=(GuardedMapping&& other) noexcept {
   std::swap(base_, other.base_);
   std::swap(bytes_, other.bytes_);
   std::swap(range_, other.range_);
   return *this;
}

GuardedMapping::~GuardedMapping() {
   if (base_ != nullptr) {
      range_->begin.store(0, std::memory_order_release);
      ::munmap(base_, bytes_);
   }
}

}  // namespace Vault
