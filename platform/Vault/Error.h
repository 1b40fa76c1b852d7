#pragma once

#include "Zam/Export.h"

#include <stdexcept>
#include <string>

// The failures of the shared tables. Each message is one line that names the file.
namespace Vault {

// The file cannot be used as the table that was asked for: "<path>: layout version 2, this reader needs 1".
class KIV_EXPORT MountError : public std::runtime_error {
 public:
   explicit MountError(std::string const& message) : std::runtime_error(message) {}
   ~MountError() override;
};

// The structure of a mounted table is broken: an index out of range, a chain that does not end, an impossible key.
class KIV_EXPORT CorruptionError : public std::runtime_error {
 public:
   explicit CorruptionError(std::string const& message) : std::runtime_error(message) {}
   ~CorruptionError() override;
};

// The table has no room for the entry: the write was refused and the table is as it was.
class KIV_EXPORT TableFull : public std::runtime_error {
 public:
   explicit TableFull(std::string const& message) : std::runtime_error(message) {}
   ~TableFull() override;
};

}  // namespace Vault
