#pragma once

#include "Ip/BasicStatus.h"
#include "Lumen/IpAddrWithMask.h"

namespace Ip {

// The IPv4 addresses of every interface. Written by the interface agents.
class KIV_EXPORT Status final : public BasicStatus<Lumen::IpAddrWithMask> {
 public:
   std::string_view fwkType() const noexcept override { return "Ip::Status"; }
};

}  // namespace Ip
