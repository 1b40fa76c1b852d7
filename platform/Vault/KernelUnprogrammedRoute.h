#pragma once

#include "Vault/VrfPrefixTable.h"

namespace Vault::KernelUnprogrammedRoute {

// Why the kernel did not take a route: its error number. The empty record stands for no error.
struct RouteError {
   U32 code = 0;

   explicit operator bool() const noexcept { return *this != RouteError(); }
   bool operator==(RouteError const&) const = default;
};

// How many routes of a VRF the kernel did not take, per address family.
class ErrorCount {
 public:
   ErrorCount(VrfId vrfId, U32 ipv4Routes, U32 ipv6Routes) noexcept
       : vrfId_(vrfId),
         routeCount_{0, ipv4Routes, ipv6Routes} {}

   VrfId vrfId() const noexcept { return vrfId_; }
   // Zero for a family that is none.
   U32 routeCount(Lumen::AddressFamily family) const noexcept {
      auto const at = static_cast<std::size_t>(family);
      return at < routeCount_.size() ? routeCount_[at] : 0;
   }

   bool operator==(ErrorCount const&) const = default;

 private:
   VrfId vrfId_;
   std::array<U32, 3> routeCount_;
};

// The routes of all VRFs and both families that the kernel did not accept.
class KIV_EXPORT UnprogrammedRoute final : public VrfPrefixTable<Records::KernelUnprogrammedRecord> {
 public:
   using VrfPrefixTable::VrfPrefixTable;
   std::string_view fwkType() const noexcept override { return "Vault::KernelUnprogrammedRoute::UnprogrammedRoute"; }

   // Nothing for a VRF whose routes were all taken.
   std::optional<ErrorCount> errorCount(VrfId vrfId) const {
      auto const found = counts(vrfId);
      return found ? std::optional(ErrorCount(vrfId, (*found)[0], (*found)[1])) : std::nullopt;
   }
   RouteError error(VrfId vrfId, Lumen::IpGenPrefix const& prefix) const {
      return RouteError{number(vrfId, prefix).value_or(0)};
   }

   // Calls `visit(vrfId, prefix, error)` for every route that is listed.
   template <class Visit>
   void walk(Visit&& visit) const {
      walkRoutes(
          [&](VrfId vrfId, Lumen::IpGenPrefix const& prefix, U32 code) { visit(vrfId, prefix, RouteError{code}); });
   }
};

class KIV_EXPORT UnprogrammedRouteWriter final : public VrfPrefixTableWriter<Records::KernelUnprogrammedRecord> {
 public:
   using VrfPrefixTableWriter::VrfPrefixTableWriter;
   std::string_view fwkType() const noexcept override {
      return "Vault::KernelUnprogrammedRoute::UnprogrammedRouteWriter";
   }

   // The empty error takes the route off the list. TableFull when there is no room; RangeError for the null prefix.
   void errorIs(VrfId vrfId, Lumen::IpGenPrefix const& prefix, RouteError error) {
      if (error) {
         numberIs(vrfId, prefix, error.code);
      } else {
         numberDel(vrfId, prefix);
      }
   }
   // False when it was not listed.
   bool errorDel(VrfId vrfId, Lumen::IpGenPrefix const& prefix) { return numberDel(vrfId, prefix); }
};

}  // namespace Vault::KernelUnprogrammedRoute
