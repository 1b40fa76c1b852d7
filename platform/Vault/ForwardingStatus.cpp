#include "Vault/ForwardingStatus.h"

namespace Vault {

namespace Fib {

ForwardingStatus::ForwardingStatus(std::string path) : FecTable(std::move(path)) {}

std::string_view ForwardingStatus::fwkType() const noexcept {
   return "Vault::Fib::ForwardingStatus";
}

ForwardingStatusWriter::ForwardingStatusWriter(std::string path) : FecTableWriter(std::move(path)) {}

ForwardingStatusWriter::ForwardingStatusWriter(std::string path, TableFile::Sizes sizes)
    : FecTableWriter(std::move(path), sizes) {}

std::string_view ForwardingStatusWriter::fwkType() const noexcept {
   return "Vault::Fib::ForwardingStatusWriter";
}

}  // namespace Fib

namespace Fib6 {

ForwardingStatus::ForwardingStatus(std::string path) : FecTable(std::move(path)) {}

std::string_view ForwardingStatus::fwkType() const noexcept {
   return "Vault::Fib6::ForwardingStatus";
}

ForwardingStatusWriter::ForwardingStatusWriter(std::string path) : FecTableWriter(std::move(path)) {}

ForwardingStatusWriter::ForwardingStatusWriter(std::string path, TableFile::Sizes sizes)
    : FecTableWriter(std::move(path), sizes) {}

std::string_view ForwardingStatusWriter::fwkType() const noexcept {
   return "Vault::Fib6::ForwardingStatusWriter";
}

}  // namespace Fib6

namespace FibGen {

ForwardingStatus::ForwardingStatus(std::string path) : FecTable(std::move(path)) {}

std::string_view ForwardingStatus::fwkType() const noexcept {
   return "Vault::FibGen::ForwardingStatus";
}

ForwardingStatusWriter::ForwardingStatusWriter(std::string path) : FecTableWriter(std::move(path)) {}

ForwardingStatusWriter::ForwardingStatusWriter(std::string path, TableFile::Sizes sizes)
    : FecTableWriter(std::move(path), sizes) {}

std::string_view ForwardingStatusWriter::fwkType() const noexcept {
   return "Vault::FibGen::ForwardingStatusWriter";
}

}  // namespace FibGen

}  // namespace Vault
