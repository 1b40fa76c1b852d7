#pragma once

#include "programs/follow/RouteTables.h"
#include "programs/kernel/KernelState.h"
#include "programs/kernel/Model.h"
#include "state/LiveDir.h"

#include <functional>
#include <set>

namespace follow {

// A change as it is told to those who ask for it.
struct Told {
   std::string_view vrf;
   Lumen::IpGenPrefix prefix;
   std::string before;  // JSON, "null" for no route
   std::string after;
};

// Keeps the tables and entities of a state directory as a model of the kernel has them. Only what differs is written,
// and in an order in which readers find each route that stays, with its next hops.
class Mirror {
 public:
   Mirror(state::LiveDir& dir, kernel::Model const& model);

   // Writes what `changes` name. What follows from them (all routes, when links have other names) is written, too.
   void apply(kernel::Changes const& changes);
   // Writes whatever differs; how many routes did.
   U64 applyAll();

   // Whether routes stay that only the tables have, until the source has told whether it has them.
   void unknownStays(bool stays) { unknownStays_ = stays; }

   // Takes out what readers need no more; when to call again, if ever.
   std::optional<Time> tidy();

   void tellIs(std::function<void(Told const&)> tell) { tell_ = std::move(tell); }

 private:
   template <class Family>
   struct OfFamily {
      OfFamily(Hive::EntityManager const& manager, Encaps& encaps, kernel::Topology const& topology,
               kernel::NextHops const& nextHops)
          : tables(manager, encaps),
            choice(topology, nextHops) {}

      RouteTables<Family> tables;
      kernel::RouteChoice<Family> choice;
      std::vector<typename kernel::RouteChoice<Family>::Candidate> candidates{};
      typename RouteTables<Family>::Vias vias{};
      std::map<VrfId, std::set<U8>> unusableDefaults{};  // their preferences
   };

   bool topologyIsNew(std::vector<kernel::KernelRoutes::Place>& touched);
   void openTables();
   void stage(kernel::KernelRoutes::Place const& place);
   template <class Family>
   void stage(OfFamily<Family>& family, std::size_t vrf, Lumen::IpGenPrefix const& prefix);
   template <class Family>
   void stageBest(OfFamily<Family>& family, VrfId vrfId);
   template <class Family>
   void noteUnusable(OfFamily<Family>& family, VrfId vrfId, std::set<U8> preferences);
   void hardwareIs(VrfId vrfId, Lumen::IpGenPrefix const& prefix, bool isProgrammed);
   template <class Family>
   U64 stageAll(OfFamily<Family>& family);
   template <class Family>
   U64 stageGone(OfFamily<Family>& family);
   bool isKnown(Lumen::AddressFamily family, std::size_t vrf, Lumen::IpGenPrefix const& prefix) const;
   U64 commit();
   template <class Family>
   U64 commit(OfFamily<Family>& family, Time now);
   template <class Family>
   void tell(RouteChange<Family> const& change) const;
   void writeEntities();
   state::State entities() const;
   bool hasVrf(VrfId vrfId) const;

   state::LiveDir& dir_;
   kernel::Model const& model_;
   kernel::Topology topology_;
   kernel::NextHops nextHops_;
   Encaps encaps_;
   OfFamily<Ip4> ip4_;
   OfFamily<Ip6> ip6_;
   Zam::Ptr<Vault::Fib::UnprogrammedRouteStatusWriter> unprogrammed_;
   std::array<bool, 2> forwards_{true, true};
   bool entitiesChanged_ = true;
   bool unknownStays_ = false;
   std::function<void(Told const&)> tell_;
};

}  // namespace follow
