#pragma once

#include "Ip/BasicStatus.h"
#include "Lumen/Ip6AddrWithMask.h"

namespace Ip6 {

// The IPv6 addresses of every interface, link-local ones included. Written by the interface agents.
class KIV_EXPORT Status final : public Ip::BasicStatus<Lumen::Ip6AddrWithMask> {
 public:
   std::string_view fwkType() const noexcept override { return "Ip6::Status"; }
};

}  // namespace Ip6
