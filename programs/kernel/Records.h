#pragma once

#include "Lumen/IpGenAddr.h"
#include "Lumen/IpGenPrefix.h"
#include "Lumen/MplsLabel.h"
#include "Zam/Int.h"
#include "programs/kernel/RtnlEncap.h"

#include <compare>
#include <memory>
#include <string>
#include <vector>

// What rtnetlink tells about: links, addresses, next hops and routes, as the kernel has them.
namespace kernel {

struct Link {
   U32 index = 0;
   std::string name;              // 1 to 15 bytes
   U32 flags = 0;                 // IFF_*
   U32 master = 0;                // index of the device this one belongs to, 0 for none
   std::string alias;             // what somebody wrote about it
   std::string kind;              // "vrf", "vlan", ...; empty for a plain device
   U32 vrfTable = 0;              // table of a device of kind "vrf"
   Tunnel::IpTunnelEncap tunnel;  // of a tunnel device; without destination when its routes have theirs
};

struct Address {
   U32 link = 0;
   Lumen::IpGenAddr local;
   U8 length = 0;
   U8 scope = 0;            // RT_SCOPE_*
   bool secondary = false;  // IPv4: of a subnet in which the link has another address already
};

struct Hop {
   U32 link = 0;
   Lumen::IpGenAddr gateway;  // empty for an on-link next hop; may be of the other family than the route's
   Lumen::MplsLabel label;    // a single one that is pushed; no label by default
   U16 weight = 1;
   bool dead = false;                   // the kernel does not send packets this way
   std::shared_ptr<Encap const> encap;  // what a label does not say; null for none, as most have

   // By value, encapsulation included.
   friend std::strong_ordering operator<=>(Hop const& one, Hop const& other);
};

struct GroupMember {
   U32 id = 0;
   U16 weight = 1;
};

struct NextHop {
   U32 id = 0;
   bool blackhole = false;
   Hop hop;                         // when neither a blackhole nor a group
   std::vector<GroupMember> group;  // the kernel allows no groups of groups
};

struct KernelRoute {
   Lumen::IpGenPrefix prefix;
   U8 sourceLength = 0;  // nonzero: the route serves packets from some addresses only
   U8 tos = 0;
   U8 protocol = 0;  // RTPROT_*
   U8 scope = 0;     // RT_SCOPE_*
   U8 type = 0;      // RTN_*
   U32 table = 0;
   U32 flags = 0;  // RTM_F_*
   U32 metric = 0;
   U32 nextHopId = 0;  // the next-hop object that the route uses, 0 for none
   std::vector<Hop> hops;
};

}  // namespace kernel
