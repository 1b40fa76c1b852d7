#include "Vault/RouteStatus.h"

namespace Vault {

namespace Fib {

RouteStatus::RouteStatus(std::string path) : RouteTable(std::move(path)) {}

std::string_view RouteStatus::fwkType() const noexcept {
   return "Vault::Fib::RouteStatus";
}

RouteStatusWriter::RouteStatusWriter(std::string path) : RouteTableWriter(std::move(path)) {}

RouteStatusWriter::RouteStatusWriter(std::string path, TableFile::Sizes sizes)
    : RouteTableWriter(std::move(path), sizes) {}

std::string_view RouteStatusWriter::fwkType() const noexcept {
   return "Vault::Fib::RouteStatusWriter";
}

}  // namespace Fib

namespace Fib6 {

RouteStatus::RouteStatus(std::string path) : RouteTable(std::move(path)) {}

std::string_view RouteStatus::fwkType() const noexcept {
   return "Vault::Fib6::RouteStatus";
}

RouteStatusWriter::RouteStatusWriter(std::string path) : RouteTableWriter(std::move(path)) {}

RouteStatusWriter::RouteStatusWriter(std::string path, TableFile::Sizes sizes)
    : RouteTableWriter(std::move(path), sizes) {}

std::string_view RouteStatusWriter::fwkType() const noexcept {
   return "Vault::Fib6::RouteStatusWriter";
}

}  // namespace Fib6

}  // namespace Vault
