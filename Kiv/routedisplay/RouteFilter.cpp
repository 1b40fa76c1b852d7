#include "Kiv/routedisplay/RouteFilter.h"

#include <algorithm>

namespace Kiv {

RouteFilterBase::~RouteFilterBase() = default;
RouteFilterColl::~RouteFilterColl() = default;

bool RouteFilterColl::filter(Zam::Ptr<CachedFec> const& fec) const {
   return std::any_of(filterColl_.begin(), filterColl_.end(),
                      [&](auto const& member) { return member->filter(fec, discardNonMatchingVia_); });
}

Zam::Ptr<RouteFilterColl> routeFilterCollFactory(bool discardNonMatchingVia) {
   return Zam::makePtr<RouteFilterColl>(discardNonMatchingVia);
}

}  // namespace Kiv
