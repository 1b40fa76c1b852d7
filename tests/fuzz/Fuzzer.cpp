#ifdef KIV_FUZZ_TARGET
#include "tests/fuzz/Targets.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
   fuzz::KIV_FUZZ_TARGET({data, size});
   return 0;
}
#endif
