#pragma once

#include "Routing/Hardware/Status.h"

namespace Routing6::Hardware {

// The hardware's limits for IPv6 routes. Written by the forwarding agent.
class KIV_EXPORT Status final : public Routing::Hardware::BasicStatus {
 public:
   std::string_view fwkType() const noexcept override { return "Routing6::Hardware::Status"; }
};

}  // namespace Routing6::Hardware
