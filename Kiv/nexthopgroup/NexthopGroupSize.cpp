#include "Kiv/nexthopgroup/NexthopGroupSize.h"

#include <algorithm>

namespace Kiv {

U32 getNhgSize(Zam::Ptr<Routing::NexthopGroup::NexthopGroupConfigEntry const> group, U32 maxSize) {
   auto const entries = group ? static_cast<U32>(group->entry().size()) : 0U;
   return maxSize != 0 ? std::min(entries, maxSize) : entries;
}

}  // namespace Kiv
