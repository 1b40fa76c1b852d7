#pragma once

#include "Vault/VrfPrefixTable.h"

namespace Vault::Fib {

struct UnprogrammedRouteCount {
   VrfId vrfId = Vrf::VrfIdMap::noVrf;
   U32 count = 0;

   bool operator==(UnprogrammedRouteCount const&) const = default;
};

// The routes of all VRFs and both families that the hardware does not forward by, and how many a VRF has of them.
class KIV_EXPORT UnprogrammedRouteStatus final : public VrfPrefixTable<Records::UnprogrammedRecord> {
 public:
   explicit UnprogrammedRouteStatus(std::string path);
   std::string_view fwkType() const noexcept override;

   // Nothing for a VRF that has none.
   std::optional<UnprogrammedRouteCount> unprogrammedRouteCount(VrfId vrfId) const;
   bool unprogrammed(VrfId vrfId, Lumen::IpGenPrefix const& prefix) const;

   // Calls `visit(vrfId, prefix)` for every route that is listed.
   template <class Visit>
   void walk(Visit&& visit) const {
      walkRoutes([&](VrfId vrfId, Lumen::IpGenPrefix const& prefix, U32) { visit(vrfId, prefix); });
   }
};

class KIV_EXPORT UnprogrammedRouteStatusWriter final : public VrfPrefixTableWriter<Records::UnprogrammedRecord> {
 public:
   // The table that is there; with sizes, a new one.
   explicit UnprogrammedRouteStatusWriter(std::string path);
   UnprogrammedRouteStatusWriter(std::string path, TableFile::Sizes sizes);
   std::string_view fwkType() const noexcept override;

   // TableFull when there is no room; RangeError for the null prefix.
   void unprogrammedIs(VrfId vrfId, Lumen::IpGenPrefix const& prefix);
   // False when it was not listed.
   bool unprogrammedDel(VrfId vrfId, Lumen::IpGenPrefix const& prefix);
};

}  // namespace Vault::Fib
