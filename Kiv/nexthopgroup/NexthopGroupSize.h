#pragma once

#include "Routing/NexthopGroup/Config.h"
#include "Zam/Export.h"

namespace Kiv {

// Over how many entries the group spreads its traffic: its configured entries, but no more than the hardware takes for
// one group (Routing::Hardware::Status::maxNexthopGroupSize, 0 for no limit). Weights do not count: an entry that gets
// three shares is one entry. 0 without a group.
KIV_EXPORT U32 getNhgSize(Zam::Ptr<Routing::NexthopGroup::NexthopGroupConfigEntry const> group, U32 maxSize);

}  // namespace Kiv
