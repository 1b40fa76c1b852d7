#include "programs/follow/Mirror.h"

#include "programs/follow/ChangeText.h"

namespace follow {

namespace {

constexpr std::size_t batch = 4096;  // routes that are staged at a time

Time now() {
   return std::chrono::steady_clock::now();
}

}  // namespace

Mirror::Mirror(state::LiveDir& dir, kernel::Model const& model)
    : dir_(dir),
      model_(model),
      topology_(model),
      nextHops_(model.nextHops()),
      encaps_(dir.earlierEntities()),
      ip4_(*dir.manager(), encaps_, topology_, nextHops_),
      ip6_(*dir.manager(), encaps_, topology_, nextHops_),
      unprogrammed_(dir.manager()->open<Vault::Fib::UnprogrammedRouteStatusWriter>("fib/unprogrammedRoute")) {
   openTables();
   ip4_.tables.opened(now());
   ip6_.tables.opened(now());
}

void Mirror::apply(kernel::Changes const& changes) {
   std::vector<kernel::KernelRoutes::Place> touched;
   bool const isNew = (changes.entities || changes.settings) && topologyIsNew(touched);
   if (isNew || changes.nextHops) {
      applyAll();
      return;
   }
   std::ranges::for_each(changes.routes, [&](auto const& place) { stage(place); });
   std::ranges::for_each(touched, [&](auto const& place) { stage(place); });
   commit();
}

U64 Mirror::applyAll() {
   std::vector<kernel::KernelRoutes::Place> touched;
   topologyIsNew(touched);
   U64 changes = stageAll(ip4_) + stageAll(ip6_) + commit();
   if (!unknownStays_) {
      changes += stageGone(ip4_) + stageGone(ip6_);
   }
   return changes;
}

std::optional<Time> Mirror::tidy() {
   auto const ip4 = ip4_.tables.removeUnused(now());
   auto const ip6 = ip6_.tables.removeUnused(now());
   if (encaps_.takeChanged()) {
      entitiesChanged_ = true;
      writeEntities();
   }
   return !ip4 ? ip6 : !ip6 ? ip4 : std::min(ip4, ip6);
}

// Whether any route may be another one for it; if not, those that are named may.
bool Mirror::topologyIsNew(std::vector<kernel::KernelRoutes::Place>& touched) {
   kernel::Topology before = std::exchange(topology_, kernel::Topology(model_));
   forwards_ = {kernel::forwards(Lumen::AddressFamily::ipv4), kernel::forwards(Lumen::AddressFamily::ipv6)};
   entitiesChanged_ = true;
   openTables();
   std::vector<std::pair<U32, Lumen::IpGenPrefix>> subnets;
   std::ranges::set_symmetric_difference(before.subnets(), topology_.subnets(), std::back_inserter(subnets));
   for (auto const& [link, prefix] : subnets) {
      for (std::size_t vrf = 0; vrf < topology_.vrfs().size(); ++vrf) {
         touched.push_back({topology_.tablesOf(vrf).front(), prefix});
      }
   }
   return !topology_.mapsLike(before);
}

void Mirror::openTables() {
   std::map<U32, std::size_t> routes;
   for (state::VrfState const& vrf : topology_.vrfs()) {
      bool const isDefault = vrf.id == Vrf::VrfIdMap::defaultVrf;
      ip4_.tables.vrfIs(vrf.id, isDefault ? model_.routes(Ip4::family).size() : 0);
      ip6_.tables.vrfIs(vrf.id, isDefault ? model_.routes(Ip6::family).size() : 0);
   }
}

void Mirror::stage(kernel::KernelRoutes::Place const& place) {
   if (auto const vrf = topology_.vrfOfTable(place.table)) {
      place.prefix.family() == Ip4::family ? stage(ip4_, *vrf, place.prefix) : stage(ip6_, *vrf, place.prefix);
   }
}

template <class Family>
void Mirror::stage(OfFamily<Family>& family, std::size_t vrf, Lumen::IpGenPrefix const& prefix) {
   VrfId const vrfId = topology_.vrfs()[vrf].id;
   std::set<U8> unusable;
   family.candidates.clear();
   for (U32 const table : topology_.tablesOf(vrf)) {
      for (kernel::KernelRoute const& route : model_.routes(Family::family).at({table, prefix})) {
         auto candidate = family.choice.candidateOf(route);
         if (candidate && candidate->isUsable()) {
            family.candidates.push_back(*std::move(candidate));
         } else if (candidate && candidate->isUnusableDefault()) {
            unusable.insert(candidate->kind.preference);
         }
      }
   }
   if (prefix.length() == 0) {
      noteUnusable(family, vrfId, std::move(unusable));
   }
   if (!family.candidates.empty()) {
      stageBest(family, vrfId);
   } else {
      family.tables.routeDel(vrfId, Family::prefix(prefix));
      hardwareIs(vrfId, prefix, true);
   }
}

template <class Family>
void Mirror::stageBest(OfFamily<Family>& family, VrfId vrfId) {
   std::ranges::stable_sort(family.candidates, {}, [](auto const& candidate) { return candidate.rank(); });
   auto const& best = family.choice.best(family.candidates);
   family.vias.clear();
   for (kernel::Hop const& hop : best.hops) {
      family.vias.push_back(kernel::viaOf(hop, topology_, encaps_.tunnelOf(hop, topology_)));
   }
   family.tables.routeIs(vrfId, best.fibRoute(), family.vias);
   hardwareIs(vrfId, best.route->prefix, best.isInHardware());
}

template <class Family>
void Mirror::noteUnusable(OfFamily<Family>& family, VrfId vrfId, std::set<U8> preferences) {
   auto& known = family.unusableDefaults[vrfId];
   entitiesChanged_ |= known != preferences;
   known = std::move(preferences);
}

void Mirror::hardwareIs(VrfId vrfId, Lumen::IpGenPrefix const& prefix, bool isProgrammed) {
   if (!isProgrammed) {
      unprogrammed_->unprogrammedIs(vrfId, prefix);
   } else if (!unprogrammed_->empty()) {
      unprogrammed_->unprogrammedDel(vrfId, prefix);
   }
}

// All that the model has.
template <class Family>
U64 Mirror::stageAll(OfFamily<Family>& family) {
   U64 changes = 0;
   kernel::KernelRoutes::Place last;
   for (kernel::KernelRoute const& route : model_.routes(Family::family)) {
      auto const place = kernel::KernelRoutes::placeOf(route);
      if (place != last) {
         stage(place);
         last = place;
      }
      changes += family.tables.staged() >= batch ? commit() : 0;
   }
   return changes;
}

// What only the tables have.
template <class Family>
U64 Mirror::stageGone(OfFamily<Family>& family) {
   U64 changes = 0;
   for (std::size_t vrf = 0; vrf < topology_.vrfs().size(); ++vrf) {
      VrfId const vrfId = topology_.vrfs()[vrf].id;
      family.tables.walk(vrfId, [&](auto const& route) {
         if (!isKnown(Family::family, vrf, route.prefix)) {
            stage(family, vrf, route.prefix);
         }
      });
      changes += commit();
   }
   return changes;
}

bool Mirror::isKnown(Lumen::AddressFamily family, std::size_t vrf, Lumen::IpGenPrefix const& prefix) const {
   return std::ranges::any_of(topology_.tablesOf(vrf), [&](U32 table) {
      return !model_.routes(family).at({table, prefix}).empty();
   });
}

U64 Mirror::commit() {
   entitiesChanged_ |= encaps_.takeChanged();
   if (entitiesChanged_) {
      writeEntities();
   }
   U64 const changes = commit(ip4_, now()) + commit(ip6_, now());
   if (changes != 0) {
      dir_.status().changes += changes;
      dir_.status().lastChange = state::systemTime();
   }
   return changes;
}

template <class Family>
U64 Mirror::commit(OfFamily<Family>& family, Time time) {
   return family.tables.commit(time, [&](RouteChange<Family> const& change) {
      if (tell_) {
         tell(change);
      }
   });
}

template <class Family>
void Mirror::tell(RouteChange<Family> const& change) const {
   auto const vrf = std::ranges::find(topology_.vrfs(), change.vrfId, &state::VrfState::id);
   tell_({vrf->name, (change.after ? *change.after : *change.before).prefix,
          routeText(change.before, change.viasBefore), routeText(change.after, change.viasAfter)});
}

void Mirror::writeEntities() {
   dir_.entitiesAre(entities());
   entitiesChanged_ = false;
   auto const isVrf = [&](VrfId vrfId) { return hasVrf(vrfId); };
   ip4_.tables.othersDel(isVrf, now());
   ip6_.tables.othersDel(isVrf, now());
}

state::State Mirror::entities() const {
   state::State state;
   state.interfaces = topology_.interfaces();
   for (state::VrfState const& own : topology_.vrfs()) {
      state::VrfState vrf{.id = own.id, .name = own.name, .routing = forwards_[0], .routing6 = forwards_[1]};
      auto const addUnusable = [&](auto const& family, Lumen::IpGenPrefix const& prefix) {
         auto const found = family.unusableDefaults.find(vrf.id);
         for (U8 const preference : found != family.unusableDefaults.end() ? found->second : std::set<U8>()) {
            kernel::unusableDefaultIs(vrf, prefix, preference);
         }
      };
      addUnusable(ip4_, Lumen::Prefix(Lumen::IpAddr(), 0));
      addUnusable(ip6_, Lumen::Ip6Prefix(Lumen::Ip6Addr(), 0));
      state.vrfs.push_back(std::move(vrf));
   }
   encaps_.putInto(state);
   return state;
}

bool Mirror::hasVrf(VrfId vrfId) const {
   return std::ranges::find(topology_.vrfs(), vrfId, &state::VrfState::id) != topology_.vrfs().end();
}

}  // namespace follow
