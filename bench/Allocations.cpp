#include "bench/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<U64> count{0};

}  // namespace

U64 allocations() noexcept {
   return count.load(std::memory_order_relaxed);
}

// Replaced for the whole process, the library's calls included.
void* operator new(std::size_t size) {
   count.fetch_add(1, std::memory_order_relaxed);
   if (void* const memory = std::malloc(size); memory != nullptr) {
      return memory;
   }
   throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
   std::free(memory);
}
void operator delete(void* memory, std::size_t /* size */) noexcept {
   std::free(memory);
}
