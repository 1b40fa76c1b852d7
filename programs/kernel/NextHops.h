#pragma once

#include "programs/kernel/Records.h"
#include "programs/kernel/Topology.h"

#include <unordered_map>
#include <vector>

namespace kernel {

// Where a route's packets go.
struct Resolved {
   std::vector<Hop> hops;
   bool blackhole = false;
};

// The next-hop objects and groups of the machine.
class NextHops {
 public:
   explicit NextHops(std::unordered_map<U32, NextHop> const& nextHops) : byId_(nextHops) {}

   // The next hops that the kernel uses for the route: dead ones and those through a link that `topology` does not know
   // are left out, and a single one has weight 1. An object that is gone is stood in for by what
   // the route itself told.
   Resolved resolve(KernelRoute const& route, Topology const& topology) const;

 private:
   void append(Resolved& resolved, NextHop const& nextHop, U16 weight) const;

   std::unordered_map<U32, NextHop> const& byId_;
};

}  // namespace kernel
