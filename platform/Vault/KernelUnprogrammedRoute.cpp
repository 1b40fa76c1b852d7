#include "Vault/KernelUnprogrammedRoute.h"

namespace Vault::KernelUnprogrammedRoute {

UnprogrammedRoute::UnprogrammedRoute(std::string path) : VrfPrefixTable(std::move(path)) {}

std::string_view UnprogrammedRoute::fwkType() const noexcept {
   return "Vault::KernelUnprogrammedRoute::UnprogrammedRoute";
}

std::optional<ErrorCount> UnprogrammedRoute::errorCount(VrfId vrfId) const {
   auto const found = counts(vrfId);
   if (!found) {
      return std::nullopt;
   }
   return ErrorCount(vrfId, (*found)[0], (*found)[1]);
}

RouteError UnprogrammedRoute::error(VrfId vrfId, Lumen::IpGenPrefix const& prefix) const {
   return RouteError{number(vrfId, prefix).value_or(0)};
}

UnprogrammedRouteWriter::UnprogrammedRouteWriter(std::string path) : VrfPrefixTableWriter(std::move(path)) {}

UnprogrammedRouteWriter::UnprogrammedRouteWriter(std::string path, TableFile::Sizes sizes)
    : VrfPrefixTableWriter(std::move(path), sizes) {}

std::string_view UnprogrammedRouteWriter::fwkType() const noexcept {
   return "Vault::KernelUnprogrammedRoute::UnprogrammedRouteWriter";
}

void UnprogrammedRouteWriter::errorIs(VrfId vrfId, Lumen::IpGenPrefix const& prefix, RouteError error) {
   if (error) {
      numberIs(vrfId, prefix, error.code);
   } else {
      numberDel(vrfId, prefix);
   }
}

bool UnprogrammedRouteWriter::errorDel(VrfId vrfId, Lumen::IpGenPrefix const& prefix) {
   return numberDel(vrfId, prefix);
}

}  // namespace Vault::KernelUnprogrammedRoute
