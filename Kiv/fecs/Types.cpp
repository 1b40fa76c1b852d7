#include "Kiv/fecs/Types.h"

#include "Kiv/fecs/CachedFec.h"
#include "Zam/TypeRegistry.h"

namespace Kiv {

void registerFecTypes() {
   auto& registry = Zam::TypeRegistry::instance();
   registry.value<CachedVia>()
       .attribute("fecId", &CachedVia::fecId, &CachedVia::fecIdIs)
       .attribute("tunnelId", &CachedVia::tunnelId, &CachedVia::tunnelIdIs)
       .attribute("forwardingVrf", &CachedVia::forwardingVrf, &CachedVia::forwardingVrfIs)
       .operation("isForwardingVrfAction", &CachedVia::isForwardingVrfAction);
   registry.value<CachedNhgVia>();
   registry.value<CachedFallbackVia>();
   registry.entity<CachedFec>("Kiv::CachedFec")
       .constructor(&cachedFecFactory)
       .attribute("fecId", &CachedFec::fecId)
       .collection("via", &CachedFec::via, &CachedFec::viaIs, &CachedFec::viaDel, &CachedFec::viaDelAll)
       .attribute("vias", &CachedFec::vias)
       .attribute("primaryVias", &CachedFec::primaryVias)
       .attribute("preparedVias", &CachedFec::preparedVias)
       .attribute("hasBackup", &CachedFec::hasBackup)
       .attribute("hierarchical", &CachedFec::hierarchical)
       .attribute("weightSum", &CachedFec::weightSum)
       .view("viaEvpnEntry", &CachedFec::viaEvpnEntry)
       .operation("viaEvpnEntryIs", &CachedFec::viaEvpnEntryIs);
}

}  // namespace Kiv
