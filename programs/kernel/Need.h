#pragma once

#include "Lumen/AddressFamily.h"
#include "Lumen/IpGenAddr.h"

#include <functional>
#include <optional>
#include <string_view>

namespace kernel {

// What of the machine a command asks about, so that no more has to be read.
struct Need {
   std::optional<Lumen::AddressFamily> family{};  // whose routes; all by default
   std::optional<Lumen::IpGenAddr> address{};     // only the route of the default VRF that forwards it

   // Told in one line when something decides about the address that routes do not show.
   std::function<void(std::string_view)> tell = [](std::string_view) {};
};

}  // namespace kernel
