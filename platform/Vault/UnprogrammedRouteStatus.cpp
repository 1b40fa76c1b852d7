#include "Vault/UnprogrammedRouteStatus.h"

namespace Vault::Fib {

UnprogrammedRouteStatus::UnprogrammedRouteStatus(std::string path) : VrfPrefixTable(std::move(path)) {}

std::string_view UnprogrammedRouteStatus::fwkType() const noexcept {
   return "Vault::Fib::UnprogrammedRouteStatus";
}

std::optional<UnprogrammedRouteCount> UnprogrammedRouteStatus::unprogrammedRouteCount(VrfId vrfId) const {
   auto const found = counts(vrfId);
   if (!found) {
      return std::nullopt;
   }
   return UnprogrammedRouteCount{vrfId, (*found)[0] + (*found)[1]};
}

bool UnprogrammedRouteStatus::unprogrammed(VrfId vrfId, Lumen::IpGenPrefix const& prefix) const {
   return number(vrfId, prefix).has_value();
}

UnprogrammedRouteStatusWriter::UnprogrammedRouteStatusWriter(std::string path)
    : VrfPrefixTableWriter(std::move(path)) {}

UnprogrammedRouteStatusWriter::UnprogrammedRouteStatusWriter(std::string path, TableFile::Sizes sizes)
    : VrfPrefixTableWriter(std::move(path), sizes) {}

std::string_view UnprogrammedRouteStatusWriter::fwkType() const noexcept {
   return "Vault::Fib::UnprogrammedRouteStatusWriter";
}

void UnprogrammedRouteStatusWriter::unprogrammedIs(VrfId vrfId, Lumen::IpGenPrefix const& prefix) {
   numberIs(vrfId, prefix, 1);
}

bool UnprogrammedRouteStatusWriter::unprogrammedDel(VrfId vrfId, Lumen::IpGenPrefix const& prefix) {
   return numberDel(vrfId, prefix);
}

}  // namespace Vault::Fib
