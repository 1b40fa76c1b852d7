#pragma once

#include "Lumen/MplsLabelOperation.h"
#include "Tunnel/IpTunnelEncap.h"
#include "programs/kernel/RtnlBytes.h"

#include <compare>
#include <string_view>

// What Linux puts in front of packets: the encapsulations of next hops, and the outer headers of tunnel devices. Of a
// wrong size they throw RtnlError, as all of a dump does.
namespace kernel {

// A label stack or an outer IP header, or neither.
struct Encap {
   Lumen::MplsLabelOperation labels;
   Tunnel::IpTunnelEncap ip;

   friend bool operator==(Encap const&, Encap const&) = default;
   friend std::strong_ordering operator<=>(Encap const& one, Encap const& other);
};

// Of RTA_ENCAP_TYPE and RTA_ENCAP. What a tunnel here cannot say is no encapsulation: other types, more labels or
// larger keys, headers without a destination of their own.
Encap hopEncap(U16 encapType, Bytes encap);

// Of IFLA_INFO_KIND and IFLA_INFO_DATA. A device that leaves the destination to its routes has a type only, one that is
// no tunnel not even that.
Tunnel::IpTunnelEncap deviceEncap(std::string_view kind, Bytes data);

}  // namespace kernel
