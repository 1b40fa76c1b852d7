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
   using VrfPrefixTable::VrfPrefixTable;
   std::string_view fwkType() const noexcept override { return "Vault::Fib::UnprogrammedRouteStatus"; }

   // Nothing for a VRF that has none.
   std::optional<UnprogrammedRouteCount> unprogrammedRouteCount(VrfId vrfId) const {
      auto const found = counts(vrfId);
      return found ? std::optional(UnprogrammedRouteCount{vrfId, (*found)[0] + (*found)[1]}) : std::nullopt;
   }
   bool unprogrammed(VrfId vrfId, Lumen::IpGenPrefix const& prefix) const { return number(vrfId, prefix).has_value(); }

   // Calls `visit(vrfId, prefix)` for every route that is listed.
   template <class Visit>
   void walk(Visit&& visit) const {
      walkRoutes([&](VrfId vrfId, Lumen::IpGenPrefix const& prefix, U32) { visit(vrfId, prefix); });
   }
};

class KIV_EXPORT UnprogrammedRouteStatusWriter final : public VrfPrefixTableWriter<Records::UnprogrammedRecord> {
 public:
   using VrfPrefixTableWriter::VrfPrefixTableWriter;
   std::string_view fwkType() const noexcept override { return "Vault::Fib::UnprogrammedRouteStatusWriter"; }

   // TableFull when there is no room; RangeError for the null prefix.
   void unprogrammedIs(VrfId vrfId, Lumen::IpGenPrefix const& prefix) { numberIs(vrfId, prefix, 1); }
   // False when it was not listed.
   bool unprogrammedDel(VrfId vrfId, Lumen::IpGenPrefix const& prefix) { return numberDel(vrfId, prefix); }
};

}  // namespace Vault::Fib
