#pragma once

#include "Zam/Int.h"
#include "Zam/Strep.h"

#include <array>

namespace Routing::NexthopGroup {

// What the entries of a nexthop group do to a packet before it leaves.
enum class NexthopGroupType : U8 {
   invalid = 0,
   ipInIp = 1,
   gre = 2,
   mpls = 3,
   ip = 4,
   mplsOverGre = 5,
   mplsOverUdp = 6,
   vxlan = 7,
};

constexpr auto zamEnumerators(NexthopGroupType) {
   using enum NexthopGroupType;
   return std::to_array<Zam::Enumerator<NexthopGroupType>>({{invalid, "invalid"},
                                                            {ipInIp, "ipInIp"},
                                                            {gre, "gre"},
                                                            {mpls, "mpls"},
                                                            {ip, "ip"},
                                                            {mplsOverGre, "mplsOverGre"},
                                                            {mplsOverUdp, "mplsOverUdp"},
                                                            {vxlan, "vxlan"}});
}

}  // namespace Routing::NexthopGroup
