#include "Vault/Error.h"

namespace Vault {

MountError::~MountError() = default;
CorruptionError::~CorruptionError() = default;
TableFull::~TableFull() = default;

}  // namespace Vault
