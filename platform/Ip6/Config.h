#pragma once

#include "Ip/BasicConfig.h"
#include "Ip6/IntfConfig.h"
#include "Zam/Export.h"

namespace Ip6 {

// The IPv6 configuration of every interface. Written by the configuration.
class KIV_EXPORT Config final : public Ip::BasicConfig<IntfConfig> {
 public:
   std::string_view fwkType() const noexcept override { return "Ip6::Config"; }
};

}  // namespace Ip6
