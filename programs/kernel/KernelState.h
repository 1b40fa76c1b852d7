#pragma once

#include "programs/kernel/RtnlSocket.h"
#include "state/State.h"

// The Linux kernel's forwarding as a State: how kinds of routes, tables, protocols and next hops translate is told in
// docs/kernel.md. Both functions throw RtnlError with one line of reason.
namespace kernel {

// The machine, as seen from the caller's network namespace.
state::State readMachine();

state::State stateFrom(Dumps const& dumps);

}  // namespace kernel
