#include "Kiv/summary/RouteSummary.h"

#include "Interface/Management.h"
#include "Kiv/common/SafeLookup.h"
#include "Kiv/common/Watchdog.h"
#include "Kiv/summary/RouteCounters.h"
#include "Kiv/summary/SummaryFamily.h"

#include "Zam/Error.h"

#include <vector>

namespace Kiv {

namespace {

template <class Family>
using Counters = RouteCounters<typename Family::RouteType, Family::largestType, Family::largestMask>;

constexpr char const* noSdkStatic = "0 && \"routeType staticOpalSdk can not be present in FIB vault\"";

template <class Map, class Key>
void countInc(Map& counts, Key const& key, U32 count) {
   auto const* const before = counts.find(key);
   counts.insertOrReplace(key, (before != nullptr ? *before : 0) + count);
}

template <class Summary>
void totalInc(Summary& summary, U32 count) {
   summary.totalNumRoutes = static_cast<S32>(static_cast<U32>(summary.totalNumRoutes) + count);
}

// The configuration decides; what it does not know is not lasting when it was installed at run time, and lasting else.
bool isPersistent(Routing::RouteList const* configured, Routing::RouteList const* dynamic,
                  Routing::RouteKey const& key) {
   if (auto const* const route = configured != nullptr ? configured->route(key) : nullptr) {
      return !route->nonPersistent();
   }
   return dynamic == nullptr || dynamic->route(key) == nullptr;
}

template <class Counters, class Summary, class Route>
void countStatic(Counters& counters, Summary const& summary, Route const& route) {
   if (!summary.routeList && !summary.routeListDynamic) {
      return;
   }
   Routing::RouteKey const key{{}, route.prefix, route.preference};
   if (isPersistent(summary.routeList.get(), summary.routeListDynamic.get(), key)) {
      ++counters.staticPersistent;
   } else {
      ++counters.staticNonPersistent;
   }
}

template <class Family, class Summary, class Route>
void count(Counters<Family>& counters, Summary const& summary, Route const& route) {
   using RouteType = typename Family::RouteType;
   RouteType const type = route.routeType;
   if (static_cast<U8>(type) > Family::largestType) {
      return;  // only damage has such a type
   }
   if (type == RouteType::staticConfig) {
      countStatic(counters, summary, route);
   } else if (type >= RouteType::iBgp && type <= RouteType::bgpLocal) {
      ++counters.bgpTotal;
   } else if (type == RouteType::isisLevel1 || type == RouteType::isisLevel2) {
      ++counters.isisTotal;
   } else if (Family::isOspf(type)) {
      ++counters.ospfTotal;
   } else if (type == RouteType::staticOpalSdk) {
      Zam::assertThat(false, noSdkStatic, traceSource, Family::loadInternalName);
   }
   counters.incrementRoute(type, route.prefix.length());
}

template <class Family, class Summary>
void loadInternal(Summary& summary) {
   Counters<Family> counters;
   trace(0, "loadInternalStructures", Family::loadInternalName);
   if (auto const* const table = summary.routingStatus.get()) {
      U64 const corruptions = table->corruptions();
      U32 sinceYield = 0;
      table->walk([&](auto const& route) {
         if (table->corruptions() != corruptions) {
            return false;
         }
         count<Family>(counters, summary, route);
         allowWatchdog(sinceYield);
         return true;
      });
   }
   trace(0, "loadInternalStructures", Family::loadInternalName, " applying final count");
   counters.apply(summary);
}

template <class Summary>
bool isOfVrf(Summary const& summary, Vrf::VrfIdMap::VrfId vrfId) {
   if (summary.vrfName.isDefaultVrf()) {
      return vrfId == Vrf::VrfIdMap::defaultVrf;
   }
   auto const* const name = summary.vrfIdMap ? summary.vrfIdMap->vrfName(vrfId) : nullptr;
   return name != nullptr && *name == summary.vrfName;
}

template <class Family, class Summary>
void loadAttached(Summary& summary) {
   if (!summary.attachedRtStatus) {
      return;
   }
   for (auto const& [key, route] : summary.attachedRtStatus->route()) {
      if (!Interface::isManagement(key.intfId) && route.active && isOfVrf(summary, route.vrfId)) {
         summary.routeCountByTypeInc("attached", 1);
         summary.routeCountByMaskInc(Family::largestMask, 1);
         summary.totalNumRoutesInc(1);
      }
   }
}

// The VRF's prefixes in the route cache, apart from it, because others may change it whenever the watchdog is let in.
std::vector<Lumen::Prefix> cachedPrefixes(RouteSummary const& summary) {
   std::vector<Lumen::Prefix> prefixes;
   if (summary.routeCacheConfig) {
      for (auto const& [key, entry] : summary.routeCacheConfig->route()) {
         if (key.prefix.family() == Lumen::AddressFamily::ipv4 && isOfVrf(summary, key.vrfId)) {
            prefixes.push_back(key.prefix.prefix());
         }
      }
   }
   return prefixes;
}

}  // namespace

void RouteSummary::loadInternalStructures() {
   loadInternal<SummaryIpv4>(*this);
}

void RouteSummary::loadAttachedRoutes() {
   loadAttached<SummaryIpv4>(*this);
}

void RouteSummary::loadRouteCacheRoutes() {
   Counters<SummaryIpv4> counters;
   U32 sinceYield = 0;
   for (Lumen::Prefix const& prefix : cachedPrefixes(*this)) {
      if (!safeLookup(routingStatus.get(), [&](auto const& fib) { return fib.route(prefix); })) {
         ++counters.staticPersistent;
         counters.incrementRoute(Routing::Fib::RouteType::staticConfig, prefix.length());
      }
      allowWatchdog(sinceYield);
   }
   trace(0, "loadRouteCacheRoutes", "void Kiv::RouteSummary::loadRouteCacheRoutes()", " applying final count");
   counters.apply(*this);
}

void RouteSummary::routeCountByTypeInc(Zam::String const& category, U32 count) {
   countInc(routeCountByType, category, count);
}

void RouteSummary::routeCountByMaskInc(U32 length, U32 count) {
   countInc(routeCountByMask, length, count);
}

void RouteSummary::totalNumRoutesInc(U32 count) {
   totalInc(*this, count);
}

void Route6Summary::loadInternalStructures() {
   loadInternal<SummaryIpv6>(*this);
}

void Route6Summary::loadAttachedRoutes() {
   loadAttached<SummaryIpv6>(*this);
}

void Route6Summary::routeCountByTypeInc(Zam::String const& category, U32 count) {
   countInc(routeCountByType, category, count);
}

void Route6Summary::routeCountByMaskInc(U32 length, U32 count) {
   countInc(routeCountByMask, length, count);
}

void Route6Summary::totalNumRoutesInc(U32 count) {
   totalInc(*this, count);
}

}  // namespace Kiv
