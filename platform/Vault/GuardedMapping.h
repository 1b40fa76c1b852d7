#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"

#include <cstddef>

namespace Vault {

// A file in memory whose reader outlives what others do to the file. Where a page is missing, because the file was made
// shorter or its disk failed, the process reads zeros in its place and torn() says so from then on; without the guard
// it would end (SIGBUS).
//
// The guard is a handler of SIGBUS, installed with the first mapping of the process. A fault elsewhere goes to the
// handler that was there before, or to the default. A program that installs its own handler later asks
// mendedBusError() in it first.
class KIV_EXPORT GuardedMapping {
 public:
   GuardedMapping() noexcept = default;
   // Maps the first `bytes` of an open file, which may be closed then. std::system_error when it cannot.
   GuardedMapping(int fd, U64 bytes, bool writable);
   GuardedMapping(GuardedMapping&& other) noexcept;
   GuardedMapping& operator=(GuardedMapping&& other) noexcept;
   ~GuardedMapping();

   std::byte* base() const noexcept { return base_; }
   U64 bytes() const noexcept { return bytes_; }
   bool torn() const noexcept;

   struct Range;

 private:
   std::byte* base_ = nullptr;
   U64 bytes_ = 0;
   Range* range_ = nullptr;
};

// To be called in a handler of SIGBUS: whether the address is in a guarded mapping, and can be read again.
KIV_EXPORT bool mendedBusError(void const* address) noexcept;

}  // namespace Vault
