#pragma once

#include "Kiv/routedisplay/CachedFec.h"
#include "Kiv/routedisplay/RouteSorter.h"

#include <vector>

// Copies FECs out of the shared tables into a sorter's cache, each once, with everything that its vias point at.
namespace Kiv {

// Makes sure that the FEC and every FEC below it are in the sorter's cache. A zero id does nothing. The hierarchy is
// walked with an explicit stack: its depth costs no call stack, and a cycle ends because what is cached is skipped.
template <class Family>
void copyAdjacency(RouteSorterOf<Family>& sorter, Vault::Fib::FecId fecId);

// Copies one FEC into the cache and pushes onto `pending` every FEC that its vias point at and that is not cached yet.
template <class Family, class Fec>
void cachedFecIs(RouteSorterOf<Family>& sorter, Vault::Fib::FecId fecId, Fec const& record,
                 std::vector<Vault::Fib::FecId>& pending);

extern template void copyAdjacency(RouteSorterOf<Ipv4>&, Vault::Fib::FecId);
extern template void copyAdjacency(RouteSorterOf<Ipv6>&, Vault::Fib::FecId);

// Fills the texts of the FEC's vias, in display order.
template <class Family>
void prepareViaTexts(RouteSorterOf<Family> const& sorter, CachedFec& fec);

// The name of a via's interface, or what stands in its place.
Zam::String interfaceText(CachedVia const& via);

}  // namespace Kiv
