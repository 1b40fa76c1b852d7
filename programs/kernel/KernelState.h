#pragma once

#include "programs/kernel/Model.h"
#include "programs/kernel/Need.h"
#include "programs/kernel/StableIds.h"
#include "programs/kernel/Topology.h"
#include "state/State.h"

// The Linux kernel's forwarding as a State: how kinds of routes, tables, protocols and next hops translate is told in
// docs/kernel.md. All functions throw RtnlError with one line of reason.
namespace kernel {

// The ids of FECs, tunnels and label stacks. Whoever reads again and again with the same object finds the same next
// hops under the same ids.
struct ForwardingIds {
   StableIds<std::vector<Hop>> fecs4{};
   StableIds<std::vector<Hop>> fecs6{};
   StableIds<Hop> tunnels{};
   StableIds<Lumen::MplsLabelOperation> labelStacks{};

   void nextReading();
};

// The machine, as seen from the caller's network namespace.
state::State readMachine();
// What a command needs of it.
state::State readMachine(Need const& need);

// Whether the namespace forwards packets; true when it does not tell.
bool forwards(Lumen::AddressFamily family);
// Notes a static default route that has no way out left: it is not in the FIB and still a configured one.
void unusableDefaultIs(state::VrfState& vrf, Lumen::IpGenPrefix const& prefix, U8 preference);
Vault::Fib::Via viaOf(Hop const& hop, Topology const& topology, Tunnel::TunnelId tunnelId);

state::State stateFrom(Model const& model);
state::State stateFrom(Model const& model, ForwardingIds& ids);

}  // namespace kernel
