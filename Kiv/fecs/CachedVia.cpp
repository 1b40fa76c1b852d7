#include "Kiv/fecs/CachedVia.h"

#include <tuple>

namespace Kiv {

std::strong_ordering operator<=>(CachedVia const& a, CachedVia const& b) {
   auto const key = [](CachedVia const& v) {
      return std::tie(v.isBackup, v.intfId, v.hop, v.viaLabel, v.viaWeight, v.viaIndex, v.forwardingAction, v.vrfId,
                      v.vrfName);
   };
   return key(a) <=> key(b);
}

}  // namespace Kiv
