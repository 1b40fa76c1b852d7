#pragma once

#include "programs/kernel/Model.h"
#include "programs/kernel/StableIds.h"
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

state::State stateFrom(Model const& model);
state::State stateFrom(Model const& model, ForwardingIds& ids);

}  // namespace kernel
