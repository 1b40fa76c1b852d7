#pragma once

#include "Lumen/BasicPrefix.h"

namespace Lumen {

// An IPv4 prefix, "10.1.0.0/16".
using Prefix = BasicPrefix<IpAddr>;

static_assert(sizeof(Prefix) == 8 && std::is_trivially_copyable_v<Prefix>);
static_assert(std::has_unique_object_representations_v<Prefix>);

}  // namespace Lumen
