#pragma once

#include "programs/kernel/KernelRoutes.h"

#include <vector>

namespace kernel {

// What notifications have touched, and what they leave in doubt: the kernel changes more than it tells.
struct Changes {
   std::vector<KernelRoutes::Place> routes{};  // of both families
   bool entities = false;                      // links or addresses, which tell what routes are
   bool nextHops = false;                      // what routes refer to by the id of a next-hop object
   bool settings = false;                      // of the namespace, such as whether it forwards
   bool doubt = false;                         // routes may have come, gone or died without a word
};

}  // namespace kernel
