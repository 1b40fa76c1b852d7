#pragma once

#include "programs/kernel/Rtnl.h"
#include "programs/kernel/Topology.h"
#include "state/State.h"

#include <map>

namespace kernel {

// Gives next hops with an encapsulation a static tunnel of their own, and puts the tunnels and their label stacks into
// a state: equal ones once, with numbers counted from 1.
class Tunnels {
 public:
   Tunnels(state::State& state, Topology const& topology) : state_(state), topology_(topology) {}

   // The tunnel of the next hop; 0 when it has no encapsulation.
   Tunnel::TunnelId tunnelOf(Hop const& hop);

 private:
   Tunnel::TunnelFib::Entry entryOf(Hop const& hop);
   Tunnel::TunnelFib::EncapId labelStackOf(Lumen::MplsLabelOperation const& labels);

   state::State& state_;
   Topology const& topology_;
   std::map<Hop, Tunnel::TunnelId> tunnelIds_;
   std::map<Lumen::MplsLabelOperation, Tunnel::TunnelFib::EncapId> labelStackIds_;
};

}  // namespace kernel
