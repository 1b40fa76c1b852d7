#pragma once

#include "Kiv/routedisplay/CachedFec.h"
#include "Kiv/routedisplay/RouteSorter.h"

#include <vector>

// Copies FECs out of the shared tables into a sorter's cache, each once, with everything that its vias point at.
namespace Kiv {

// Makes sure that the FEC and every FEC below it are in the sorter's cache, and gives the FEC, which stays as long as
// the cache; null for a zero id, which does nothing. The hierarchy is walked with an explicit stack: its depth
// costs no call stack, and a cycle ends because what is cached is skipped.
template <class Family>
CachedFec* copyAdjacency(RouteSorterOf<Family>& sorter, Vault::Fib::FecId fecId);

// Copies one FEC into the cache, in place of the record the configured vias for a FEC of the route cache, and pushes
// onto `pending` every FEC that its vias point at and that is not cached yet.
template <class Family, class Fec>
void cachedFecIs(RouteSorterOf<Family>& sorter, Vault::Fib::FecId fecId, Fec const& record,
                 std::vector<Vault::Fib::FecId>& pending);

extern template CachedFec* copyAdjacency(RouteSorterOf<Ipv4>&, Vault::Fib::FecId);
extern template CachedFec* copyAdjacency(RouteSorterOf<Ipv6>&, Vault::Fib::FecId);
extern template void cachedFecIs(RouteSorterOf<Ipv4>&, Vault::Fib::FecId, Vault::Fib::Fec const&,
                                 std::vector<Vault::Fib::FecId>&);
extern template void cachedFecIs(RouteSorterOf<Ipv6>&, Vault::Fib::FecId, Vault::Fib::Fec const&,
                                 std::vector<Vault::Fib::FecId>&);

}  // namespace Kiv
