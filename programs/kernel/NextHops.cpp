#include "programs/kernel/NextHops.h"

namespace kernel {

Resolved NextHops::resolve(KernelRoute const& route, Topology const& topology) const {
   Resolved resolved;
   if (auto const found = byId_.find(route.nextHopId); route.nextHopId != 0 && found != byId_.end()) {
      append(resolved, found->second, 1);
   } else {
      resolved.hops = route.hops;
   }
   std::erase_if(resolved.hops, [&](Hop const& hop) { return hop.dead || !topology.interface(hop.link).isValid(); });
   if (resolved.hops.size() == 1) {
      resolved.hops.front().weight = 1;  // there is nothing to share
   }
   return resolved;
}

void NextHops::append(Resolved& resolved, NextHop const& nextHop, U16 weight) const {
   if (nextHop.group.empty()) {
      resolved.blackhole |= nextHop.blackhole;
      resolved.hops.push_back(nextHop.hop);
      resolved.hops.back().weight = weight;
      return;
   }
   for (GroupMember const& member : nextHop.group) {
      auto const found = byId_.find(member.id);
      if (found != byId_.end() && found->second.group.empty()) {
         append(resolved, found->second, member.weight);
      }
   }
}

}  // namespace kernel
