#include "Kiv/selection/Types.h"

#include "Kiv/selection/RouteFilter.h"
#include "Zam/TypeRegistry.h"

namespace Kiv {

namespace {

template <class Filter>
Zam::TypeBuilder<Filter> filterType(char const* name) {
   return Zam::TypeRegistry::instance().entity<Filter>(name).operation("filter", &Filter::filter);
}

}  // namespace

void registerSelectionTypes() {
   filterType<RouteFilterBase>("Kiv::RouteFilterBase");
   filterType<RouteFilterIp>("Kiv::RouteFilterIp")
       .constructor(RouteFilterIpIs)
       .attribute("filteringIp", &RouteFilterIp::filteringIp);
   filterType<RouteFilterIntf>("Kiv::RouteFilterIntf")
       .constructor(RouteFilterIntfIs)
       .attribute("filteringIntfStatus", &RouteFilterIntf::filteringIntfStatus);
   filterType<RouteFilterNextHopGroup>("Kiv::RouteFilterNextHopGroup")
       .constructor(RouteFilterNextHopGroupIs)
       .attribute("filteringNextHopGroupId", &RouteFilterNextHopGroup::filteringNextHopGroupId)
       .attribute("filterAll", &RouteFilterNextHopGroup::filterAll);
   filterType<RouteFilterColl>("Kiv::RouteFilterColl")
       .constructor(RouteFilterCollIs)
       .attribute("discardNonMatchingVia", &RouteFilterColl::discardNonMatchingVia)
       .attribute("filterAll", &RouteFilterColl::filterAll, &RouteFilterColl::filterAllIs)
       .collection("filterColl", &RouteFilterColl::filterColl, &RouteFilterColl::filterCollIs,
                   &RouteFilterColl::filterCollDel, &RouteFilterColl::filterCollDelAll);
}

}  // namespace Kiv
