#pragma once

#include "Lumen/AddressFamily.h"
#include "programs/kernel/Records.h"
#include "programs/kernel/RtnlBytes.h"

#include <linux/lwtunnel.h>

namespace kernel {

// A next hop together with the encapsulation that its attributes describe in two parts.
struct HopParts {
   Hop hop;
   U16 encapType = LWTUNNEL_ENCAP_NONE;
   Bytes encapBytes;

   // Of a route, or one of its next hops; of what tells no next hop, nothing.
   void take(Attribute const& attribute, Lumen::AddressFamily family);
   Hop whole();
};

// Of RTA_MULTIPATH.
std::vector<Hop> decodeMultipath(Bytes bytes, Lumen::AddressFamily family);

}  // namespace kernel
