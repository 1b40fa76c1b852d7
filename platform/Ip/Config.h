#pragma once

#include "Ip/BasicConfig.h"
#include "Ip/IpIntfConfig.h"
#include "Zam/Export.h"

namespace Ip {

// The IPv4 configuration of every interface. Written by the configuration.
class KIV_EXPORT Config final : public BasicConfig<IpIntfConfig> {
 public:
   std::string_view fwkType() const noexcept override { return "Ip::Config"; }
};

}  // namespace Ip
