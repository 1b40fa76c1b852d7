#pragma once

#include "Lumen/IpGenAddr.h"
#include "programs/kernel/Model.h"
#include "state/State.h"

#include <optional>
#include <string>

namespace kernel {

// What the kernel answers about the route of an address.
struct Lookup {
   std::optional<Model> model{};        // the machine with that route alone; none when more has to be read to tell
   std::optional<KernelRoute> route{};  // none when the kernel has none
   int error = 0;                       // why
};

Lookup lookUp(Lumen::IpGenAddr const& address);

// What decides about the address in place of the routes of the default VRF, as far as the kernel's answer tells: a rule
// of policy routing, or a throw route. Empty when it is they.
std::string decidedElsewhere(Lookup const& lookup, Lumen::IpGenAddr const& address, state::State const& state);

}  // namespace kernel
