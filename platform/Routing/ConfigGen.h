#pragma once

#include "Zam/Export.h"
#include "Zam/Ptr.h"

namespace Routing {

// The routing configuration of one address family in one VRF. Written by the configuration, read by the displays.
class KIV_EXPORT ConfigGen final : public Zam::PtrInterface {
 public:
   std::string_view fwkType() const noexcept override { return "Routing::ConfigGen"; }

   // Whether packets are routed at all.
   bool routing() const noexcept { return routing_; }
   void routingIs(bool routing) noexcept { routing_ = routing; }

 private:
   bool routing_ = false;
};

}  // namespace Routing
