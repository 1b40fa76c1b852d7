#pragma once

#include "Lumen/IpGenAddr.h"

#include <cstddef>
#include <optional>
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
// Without the routes of other families than this one, if one is given.
Dumps readDumps(std::optional<Lumen::AddressFamily> family);
// The same of links and addresses alone.
Dumps readEntityDumps();

// What the kernel answers when it is asked which route forwards an address: RTM_NEWROUTE, or NLMSG_ERROR.
std::vector<std::byte> askForRoute(Lumen::IpGenAddr const& address);

}  // namespace kernel
