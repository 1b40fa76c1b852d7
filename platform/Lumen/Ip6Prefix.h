#pragma once

#include "Lumen/BasicPrefix.h"

namespace Lumen {

// An IPv6 prefix, "2001:db8::/32".
using Ip6Prefix = BasicPrefix<Ip6Addr>;

static_assert(sizeof(Ip6Prefix) == 24 && std::is_trivially_copyable_v<Ip6Prefix>);
static_assert(std::has_unique_object_representations_v<Ip6Prefix>);

}  // namespace Lumen
