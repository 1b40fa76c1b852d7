#pragma once

#include "Lumen/IntfId.h"
#include "Lumen/IpGenAddr.h"
#include "Tunnel/TunnelFib/TunnelFib.h"
#include "Zam/Export.h"
#include "Zam/Hash.h"
#include "Zam/Ptr.h"

#include <compare>
#include <tuple>
#include <vector>

namespace Tunnel::CliSupport {

// One way out of a tunnel. Its interface may stand for a further tunnel, a FEC or a nexthop group.
struct SortedTunVia {
   Lumen::IntfId intfId{};
   Lumen::IpGenAddr hop{};
   TunnelFib::EncapId encapId = 0;
   U32 weight = 1;

   // By interface before address, as the vias of a route.
   std::strong_ordering operator<=>(SortedTunVia const& other) const noexcept { return key() <=> other.key(); }
   bool operator==(SortedTunVia const& other) const noexcept { return key() == other.key(); }

 private:
   std::tuple<Lumen::IntfId const&, Lumen::IpGenAddr const&, TunnelFib::EncapId const&, U32 const&> key() const {
      return {intfId, hop, encapId, weight};
   }
};

// The ways of one tunnel, each list in order.
class KIV_EXPORT SortedTunViaSet final : public Zam::PtrInterface {
 public:
   std::string_view fwkType() const noexcept override { return "Tunnel::CliSupport::SortedTunViaSet"; }

   std::vector<SortedTunVia> primaryVia;
   std::vector<SortedTunVia> backupVia;
};

}  // namespace Tunnel::CliSupport

template <>
struct std::hash<Tunnel::CliSupport::SortedTunVia> {
   std::size_t operator()(Tunnel::CliSupport::SortedTunVia const& via) const noexcept {
      return Zam::combinedHash(via.intfId.hashValue(), via.hop.hashValue(), std::size_t{via.encapId},
                               std::size_t{via.weight});
   }
};
