#pragma once

#include "programs/kernel/Records.h"
#include "programs/kernel/StableIds.h"
#include "programs/kernel/Topology.h"
#include "state/State.h"

namespace kernel {

// The tunnel of a next hop with an encapsulation, which pushes the label stack of this id, 0 for none.
Tunnel::TunnelFib::Entry tunnelEntryOf(Hop const& hop, Topology const& topology, Tunnel::TunnelFib::EncapId labels);

// Gives next hops with an encapsulation a static tunnel of their own, and puts the tunnels and their label stacks into
// a state: equal ones once.
class Tunnels {
 public:
   Tunnels(state::State& state, Topology const& topology, StableIds<Hop>& tunnelIds,
           StableIds<Lumen::MplsLabelOperation>& labelStackIds)
       : state_(state),
         topology_(topology),
         tunnelIds_(tunnelIds),
         labelStackIds_(labelStackIds) {}

   // The tunnel of the next hop; 0 when it has no encapsulation.
   Tunnel::TunnelId tunnelOf(Hop const& hop);

 private:
   Tunnel::TunnelFib::EncapId labelStackOf(Lumen::MplsLabelOperation const& labels);

   state::State& state_;
   Topology const& topology_;
   StableIds<Hop>& tunnelIds_;
   StableIds<Lumen::MplsLabelOperation>& labelStackIds_;
};

}  // namespace kernel
