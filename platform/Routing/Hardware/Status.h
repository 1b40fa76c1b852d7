#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"
#include "Zam/Ptr.h"

namespace Routing::Hardware {

// What the forwarding hardware can hold for one address family; the families' own types derive from it.
class KIV_EXPORT BasicStatus : public Zam::PtrInterface {
 public:
   // How many vias one route may have; 0 means no limit.
   U32 maxVias() const noexcept { return maxVias_; }
   void maxViasIs(U32 maxVias) noexcept { maxVias_ = maxVias; }

 private:
   U32 maxVias_ = 0;
};

// The hardware's limits for IPv4 routes and for nexthop groups. Written by the forwarding agent.
class KIV_EXPORT Status final : public BasicStatus {
 public:
   std::string_view fwkType() const noexcept override { return "Routing::Hardware::Status"; }

   // How many entries of a nexthop group it spreads traffic over; 0 means no limit.
   U32 maxNexthopGroupSize() const noexcept { return maxNexthopGroupSize_; }
   void maxNexthopGroupSizeIs(U32 size) noexcept { maxNexthopGroupSize_ = size; }

 private:
   U32 maxNexthopGroupSize_ = 0;
};

}  // namespace Routing::Hardware
