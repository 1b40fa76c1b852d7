#pragma once

#include "Lumen/AddressFamily.h"
#include "Lumen/IpGenAddr.h"
#include "programs/kernel/RtnlBytes.h"

namespace kernel {

// Of AF_INET and AF_INET6.
Lumen::AddressFamily familyOf(U16 linuxFamily);

// Of the size that the family has; RtnlError otherwise.
Lumen::IpGenAddr addressOf(Attribute const& attribute, Lumen::AddressFamily family);

}  // namespace kernel
