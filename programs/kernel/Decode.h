#pragma once

#include "programs/kernel/Records.h"
#include "programs/kernel/RtnlBytes.h"

#include <optional>

// One message of rtnetlink, in a dump or a notification, new or deleted, is one record. Anything of a wrong size or
// that cannot be is an RtnlError; attributes that are not known are skipped.
namespace kernel {

// None for what another address family adds to a link.
std::optional<Link> decodeLink(Bytes payload);
// None for another address family.
std::optional<Address> decodeAddress(Bytes payload);
NextHop decodeNextHop(Bytes payload);
// None for another address family.
std::optional<KernelRoute> decodeRoute(Bytes payload);

}  // namespace kernel
