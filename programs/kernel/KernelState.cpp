#include "programs/kernel/KernelState.h"

#include "programs/kernel/Lookup.h"
#include "programs/kernel/RouteChoice.h"
#include "programs/kernel/Tunnels.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <span>
#include <tuple>

namespace kernel {

namespace {

template <class Family>
constexpr auto idsOf = &ForwardingIds::fecs4;
template <>
constexpr auto idsOf<Ip6> = &ForwardingIds::fecs6;

// Turns the kernel's routes of one family into those of the VRFs.
template <class Family>
class RouteMapper {
   using Choice = RouteChoice<Family>;
   using Candidate = typename Choice::Candidate;

 public:
   RouteMapper(state::State& state, Topology const& topology, NextHops const& nextHops, Tunnels& tunnels,
               StableIds<std::vector<Hop>>& fecIds)
       : state_(state),
         topology_(topology),
         choice_(topology, nextHops),
         tunnels_(tunnels),
         fecIds_(fecIds) {}

   void map(KernelRoutes const& routes) {
      std::vector<Candidate> candidates;
      for (KernelRoute const& route : routes) {
         if (auto candidate = choice_.candidateOf(route)) {
            take(*std::move(candidate), candidates);
         }
      }
      std::ranges::stable_sort(candidates, {}, [](Candidate const& c) { return std::tuple(c.place(), c.rank()); });
      for (auto first = candidates.begin(); first != candidates.end();) {
         auto const isElsewhere = [&](Candidate const& c) { return c.place() != first->place(); };
         auto const last = std::find_if(first, candidates.end(), isElsewhere);
         addBest(Choice::best(std::span(first, last)));
         first = last;
      }
   }

 private:
   void take(Candidate candidate, std::vector<Candidate>& candidates) {
      if (candidate.isUsable()) {
         candidates.push_back(std::move(candidate));
      } else if (candidate.isUnusableDefault()) {
         unusableDefaultIs(state_.vrfs[candidate.vrf], candidate.route->prefix, candidate.kind.preference);
      }
   }

   void addBest(Candidate const& best) {
      state::VrfState& vrf = state_.vrfs[best.vrf];
      auto route = best.fibRoute();
      route.fecId = fecOf(best.hops);
      (vrf.*Family::routes).push_back(route);
      if (!best.isInHardware()) {
         vrf.hardwareUnprogrammed.push_back({.prefix = best.route->prefix});
      }
   }

   // The FEC of these next hops, shared by all routes that have the same ones.
   Vault::Fib::FecId fecOf(std::vector<Hop> const& hops) {
      auto const [id, isFirst] = fecIds_.use(hops);
      auto const fecId = Vault::Fib::FecId::of(Family::adjType, id);
      if (isFirst) {
         typename Family::Fec fec{.fecId = fecId, .primaryVias = static_cast<U16>(hops.size())};
         std::ranges::transform(hops, std::back_inserter(fec.vias),
                                [&](Hop const& hop) { return viaOf(hop, topology_, tunnels_.tunnelOf(hop)); });
         (state_.*Family::fecs).push_back(std::move(fec));
      }
      return fecId;
   }

   state::State& state_;
   Topology const& topology_;
   Choice choice_;
   Tunnels& tunnels_;
   StableIds<std::vector<Hop>>& fecIds_;
};

}  // namespace

bool forwards(Lumen::AddressFamily family) {
   bool const isIp4 = family == Lumen::AddressFamily::ipv4;
   std::ifstream file(std::string("/proc/sys/net/") + (isIp4 ? "ipv4" : "ipv6") + "/conf/all/forwarding");
   int value = 1;
   file >> value;
   return !file || value != 0;
}

void unusableDefaultIs(state::VrfState& vrf, Lumen::IpGenPrefix const& prefix, U8 preference) {
   Routing::RouteKey const key{{}, prefix, preference};
   auto const route = vrf.staticRoutes.of(prefix.family()).routeIs(key, Routing::RouteType::forward);
   route->nonPersistentIs(true);  // it is the kernel's to keep, and has no vias that a command could configure
}

// Without a gateway, it is to the far end of a tunnel over IP that packets go.
Vault::Fib::Via viaOf(Hop const& hop, Topology const& topology, Tunnel::TunnelId tunnelId) {
   return {.intfId = topology.interface(hop.link),
           .hop = hop.gateway.isEmpty() && hop.encap ? hop.encap->ip.destination : hop.gateway,
           .label = hop.label,
           .weight = hop.weight,
           .tunnelId = tunnelId};
}

void ForwardingIds::nextReading() {
   fecs4.nextReading();
   fecs6.nextReading();
   tunnels.nextReading();
   labelStacks.nextReading();
}

state::State stateFrom(Model const& model) {
   ForwardingIds ids;
   return stateFrom(model, ids);
}

state::State stateFrom(Model const& model, ForwardingIds& ids) {
   Topology const topology(model);
   NextHops const nextHops(model.nextHops());
   state::State state;
   state.interfaces = topology.interfaces();
   state.vrfs = topology.vrfs();
   Tunnels tunnels(state, topology, ids.tunnels, ids.labelStacks);
   auto const map = [&]<class Family>(Family) {
      RouteMapper<Family>(state, topology, nextHops, tunnels, ids.*idsOf<Family>).map(model.routes(Family::family));
   };
   map(Ip4());
   map(Ip6());
   ids.nextReading();
   return state;
}

state::State readMachine() {
   return readMachine({});
}

state::State readMachine(Need const& need) {
   auto lookup = need.address ? lookUp(*need.address) : Lookup{};
   state::State state = stateFrom(lookup.model ? *std::move(lookup.model) : Model(readDumps(need.family)));
   if (std::string const told = need.address ? decidedElsewhere(lookup, *need.address, state) : ""; !told.empty()) {
      need.tell(told);
   }
   for (state::VrfState& vrf : state.vrfs) {
      vrf.routing = forwards(Lumen::AddressFamily::ipv4);
      vrf.routing6 = forwards(Lumen::AddressFamily::ipv6);
   }
   return state;
}

}  // namespace kernel
