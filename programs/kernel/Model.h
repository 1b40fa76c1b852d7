#pragma once

#include "programs/kernel/Changes.h"
#include "programs/kernel/KernelRoutes.h"
#include "programs/kernel/LinkAddresses.h"
#include "programs/kernel/RtnlSocket.h"

#include <unordered_map>
#include <unordered_set>

namespace kernel {

struct Message;

// What rtnetlink tells of a machine, keyed as the kernel has it: filled from dumps, and kept as the kernel's
// notifications say. What the kernel changes without a word (IPv4 routes that go with a link, an address or a next-hop
// object) stays until it is dumped again. Routes may come from a routing daemon instead, which tells all that it
// changes in the same words, but has one route per prefix. All functions throw RtnlError for bytes that are not what
// they should be.
class Model {
 public:
   Model() = default;
   explicit Model(Dumps const& dumps);

   // Links and addresses as dumped, instead of those that were known.
   void entitiesAre(Dumps const& dumps);
   // Whose routes and next hops are kept: the kernel's unless said.
   enum class RoutesOf { kernel, daemon };
   void routesAreOf(RoutesOf whose) { routesOf_ = whose; }
   // Forgets them.
   void routesDel();

   // A datagram of notifications; of other types than those of dumps, nothing. Adds to what has changed.
   void notify(Bytes datagram, Changes& changes);

   std::map<U32, Link> const& links() const { return links_; }
   LinkAddresses const& addresses() const { return addresses_; }
   std::unordered_map<U32, NextHop> const& nextHops() const { return nextHops_; }
   KernelRoutes const& routes(Lumen::AddressFamily family) const {
      return family == Lumen::AddressFamily::ipv4 ? routes4_ : routes6_;
   }

 private:
   void fillRoutes(Bytes dump, Lumen::AddressFamily family);
   void take(Message const& message, Changes& changes);
   void takeLink(Message const& message, Changes& changes);
   void takeAddress(Message const& message, Changes& changes);
   void takeNextHop(Message const& message, Changes& changes);
   void takeRoute(Message const& message, Changes& changes);
   KernelRoutes& routesOf(KernelRoute const& route);

   std::map<U32, Link> links_;  // by index, as are dumps
   LinkAddresses addresses_;
   std::unordered_map<U32, NextHop> nextHops_;
   std::unordered_set<U32> missedNextHops_;  // that routes referred to before they were known
   RoutesOf routesOf_ = RoutesOf::kernel;
   KernelRoutes routes4_;
   KernelRoutes routes6_;
};

}  // namespace kernel
