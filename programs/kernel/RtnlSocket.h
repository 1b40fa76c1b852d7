#pragma once

#include <cstddef>
#include <vector>

namespace kernel {

// Everything that rtnetlink tells about a machine's forwarding, undecoded: one dump each, ending in NLMSG_DONE.
// `nextHops` is empty where the kernel has no next-hop objects.
struct Dumps {
   std::vector<std::byte> links;
   std::vector<std::byte> addresses;
   std::vector<std::byte> nextHops;
   std::vector<std::byte> routes4;
   std::vector<std::byte> routes6;
};

// Asks this machine's kernel, in the caller's network namespace; needs no privilege. A dump during which its contents
// changed is read again, a bounded number of times. Throws RtnlError.
Dumps readDumps();
// The same of links and addresses alone.
Dumps readEntityDumps();

}  // namespace kernel
