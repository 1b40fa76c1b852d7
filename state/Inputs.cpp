#include "state/Inputs.h"

#include "state/OneLoad.h"
#include "state/StateDir.h"

#include <algorithm>

namespace state {
namespace {

using Lumen::AddressFamily;

template <class Status, class Addresses>
void addAddresses(Status& status, Interface const& interface, L3::VrfName const& vrfName, Addresses const& addresses) {
   typename Status::IntfStatus intf;
   intf.vrfId = interface.vrfId;
   intf.vrfName = vrfName;
   intf.loopback = interface.loopback;
   if (!addresses.empty()) {
      intf.primaryAddr = addresses.front();
      intf.secondaryAddr.assign(addresses.begin() + 1, addresses.end());
   }
   status.intfStatusIs(interface.intfId, std::move(intf));
}

Zam::Ptr<Routing::ConfigGen const> routingConfig(bool routing) {
   auto const config = Zam::makePtr<Routing::ConfigGen>();
   config->routingIs(routing);
   return config;
}

Inputs::Table<Routing::Rib::RouteConfig> routeConfig(State const& state, std::vector<CachedRoute> VrfState::*routes) {
   auto const config = Zam::makePtr<Routing::Rib::RouteConfig>();
   for (VrfState const& vrf : state.vrfs) {
      for (CachedRoute const& route : vrf.*routes) {
         config->routeIs({{}, route.prefix, vrf.id}, route.entry);
      }
   }
   return config->route().size() != 0 ? config : nullptr;
}

auto const& tunnelsOf(State const& state, Tunnel::TunnelTable::TunnelEntry const*) {
   return state.tunnelEntries;
}

auto const& tunnelsOf(State const& state, Tunnel::TunnelTable::EvpnVxlanTunnelEntry const*) {
   return state.evpnTunnels;
}

template <class TunnelTable>
void addTunnels(Inputs::Table<TunnelTable>& table, State const& state) {
   auto const filled = Zam::makePtr<TunnelTable>();
   for (auto const& [tunnelId, entry] : tunnelsOf(state, static_cast<typename TunnelTable::Entry const*>(nullptr))) {
      if (Tunnel::tunnelType(tunnelId) == TunnelTable::tunnelType) {
         filled->entryIs(tunnelId, entry);
      }
   }
   table = filled;
}

}  // namespace

Inputs::Inputs(Zam::Ptr<Hive::EntityManager const> manager, State const& state) : manager_(std::move(manager)) {
   forwardingStatus = manager_->mountRequired<Vault::Fib::ForwardingStatus>("fib/forwarding");
   forwarding6Status = manager_->mountRequired<Vault::Fib6::ForwardingStatus>("fib6/forwarding");
   if (state.genericFib) {
      forwardingGenStatus = manager_->mountRequired<Vault::FibGen::ForwardingStatus>("fibGen/forwarding");
   }
   policyForwardingStatus = manager_->mountRequired<Vault::Fib::ForwardingStatus>("fib/policyForwarding");
   unprogrammedRouteStatus = manager_->mountRequired<Vault::Fib::UnprogrammedRouteStatus>("fib/unprogrammedRoute");
   kernelUnprogrammedRoute =
       manager_->mountRequired<Vault::KernelUnprogrammedRoute::UnprogrammedRoute>("kernel/unprogrammedRoute");
   nexthopGroupEntryStatus = manager_->mountRequired<::NexthopGroup::EntryStatus>(::NexthopGroup::entryStatusPath);
   vrfsAre(state);
   interfacesAre(state);
   nexthopGroupsAre(state);
   routeCacheIs(state);
   tunnelsAre(state);
   policiesAre(state);
}

void Inputs::allMounted() {
   for (Vrf const& vrf : vrfs_) {
      routes(vrf.id);
      routes6(vrf.id);
   }
   nexthopGroupCounters();
}

// What is mounted at once is of one load in any case. Damage is told by what asks for the table.
void Inputs::fewMounted() {
   constexpr std::size_t few = 64;
   for (std::size_t i = 0; i < std::min(few, vrfs_.size()); ++i) {
      try {
         routes(vrfs_[i].id);
         routes6(vrfs_[i].id);
      } catch (Vault::MountError const&) {
         continue;
      }
   }
}

void Inputs::checkLoad() const {
   if (from_ && !(StateDirId(from_->stateDir) == from_->id)) {
      throw Hive::StateError(from_->stateDir + ": another state was loaded while this one was read");
   }
}

Inputs::Vrf const* Inputs::vrf(std::string_view name) const {
   auto const found =
       std::ranges::find_if(vrfs_, [name](Vrf const& vrf) { return std::string_view(vrf.name) == name; });
   return found != vrfs_.end() ? &*found : nullptr;
}

template <class T>
Inputs::Table<T> Inputs::mounted(std::map<VrfId, Table<T>>& tables, VrfId vrfId, std::string_view below) try {
   auto const found = tables.find(vrfId);
   return found != tables.end()
              ? found->second
              : tables[vrfId] = manager_->mountRequired<T>(std::string(below) + std::to_string(vrfId));
} catch (Vault::MountError const&) {
   checkLoad();  // the directory of an earlier load is gone, not damaged
   throw;
}

Inputs::Table<Vault::Fib::RouteStatus> Inputs::routes(VrfId vrfId) {
   return mounted(routes_, vrfId, "fib/route/");
}

Inputs::Table<Vault::Fib6::RouteStatus> Inputs::routes6(VrfId vrfId) {
   return mounted(routes6_, vrfId, "fib6/route/");
}

Inputs::Table<Kiv::NexthopGroupCounterHelper> Inputs::nexthopGroupCounters() {
   if (!nexthopGroupCounters_) {
      auto const counters = Kiv::nexthopGroupCounterHelperFactory();
      counters->mountCounterVaults(manager_);
      checkLoad();
      nexthopGroupCounters_ = counters;
   }
   return nexthopGroupCounters_;
}

Inputs::Table<::Interface::IntfStatus> Inputs::intfStatus(std::string_view name) const {
   auto const found = intfStatus_.find(name);
   return found != intfStatus_.end() ? found->second : nullptr;
}

void Inputs::vrfsAre(State const& state) {
   auto const names = Zam::makePtr<::Vrf::VrfIdMap::Status>();
   auto const attached = Zam::makePtr<Routing::AttachedRouteStatus>();
   auto const attached6 = Zam::makePtr<Routing::AttachedRouteStatus>();
   for (VrfState const& vrf : state.vrfs) {
      names->vrfNameIs(vrf.id, vrf.name);
      vrfs_.push_back({.id = vrf.id,
                       .name = vrf.name,
                       .ip = {routingConfig(vrf.routing), vrf.staticRoutes.ip, vrf.dynamicRoutes.ip},
                       .ip6 = {routingConfig(vrf.routing6), vrf.staticRoutes.ip6, vrf.dynamicRoutes.ip6},
                       .routeDistinguisher = vrf.routeDistinguisher,
                       .autoRouteDistinguisher = vrf.autoRouteDistinguisher});
      for (AttachedRoute const& route : vrf.attachedRoutes) {
         auto const& status = route.address.family() == AddressFamily::ipv4 ? attached : attached6;
         status->routeIs({{}, route.intfId, route.address}, {{}, vrf.id, route.active});
      }
   }
   vrfIdMap = names;
   attachedRouteStatus = attached;
   attachedRoute6Status = attached6;
}

void Inputs::interfacesAre(State const& state) {
   auto const config = Zam::makePtr<::Interface::AllIntfConfigDir>();
   auto const layer3 = Zam::makePtr<L3::Config>();
   auto const ip = Zam::makePtr<::Ip::Status>();
   auto const ip6 = Zam::makePtr<::Ip6::Status>();
   for (Interface const& interface : state.interfaces) {
      auto const* const known = vrfIdMap->vrfName(interface.vrfId);
      L3::VrfName const vrfName = known != nullptr ? *known : L3::VrfName();
      config->intfConfigIs(interface.intfId,
                           {.description = Zam::String(interface.description), .tunnel = interface.tunnel});
      layer3->intfVrfIs(interface.intfId, vrfName);
      auto const status = Zam::makePtr<::Interface::IntfStatus>(interface.intfId);
      status->vrfIdIs(interface.vrfId);
      intfStatus_.emplace(interface.intfId.name(), status);
      addAddresses(*ip, interface, vrfName, interface.addresses);
      addAddresses(*ip6, interface, vrfName, interface.addresses6);
   }
   allIntfConfig = config;
   l3Config = layer3;
   ipStatus = ip;
   ip6Status = ip6;
   auto const hardware = Zam::makePtr<Routing::Hardware::Status>();
   hardware->maxViasIs(state.maxVias);
   hardware->maxNexthopGroupSizeIs(state.maxNexthopGroupSize);
   routingHardwareStatus = hardware;
   auto const hardware6 = Zam::makePtr<Routing6::Hardware::Status>();
   hardware6->maxViasIs(state.maxVias6);
   routing6HardwareStatus = hardware6;
}

void Inputs::nexthopGroupsAre(State const& state) {
   auto const config = Zam::makePtr<Routing::NexthopGroup::Config>();
   for (auto const& group : state.nexthopGroups) {
      auto const configured = Zam::makePtr<Routing::NexthopGroup::NexthopGroupConfigEntry>(group.name, group.type);
      for (auto const& [index, entry] : group.entries) {
         configured->entryIs(index, entry);
      }
      config->nexthopGroupIs(configured);
   }
   nexthopGroupConfig = config;
   auto const hardware = Zam::makePtr<Routing::Hardware::NexthopGroupStatus>();
   for (VrfState const& vrf : state.vrfs) {
      auto const status = hardware->vrfStatusIs(vrf.name);
      for (ProgrammedGroup const& group : vrf.programmedGroups) {
         status->programmedIs(group.id, group.entries);
      }
   }
   nexthopGroupHardwareStatus = hardware;
}

void Inputs::routeCacheIs(State const& state) {
   auto const evpn = Zam::makePtr<Routing::Rib::RouteCache::Evpn::ViaConfig>();
   for (EvpnFec const& fec : state.evpnFecs) {
      evpn->viaIs(fec.fecId.value(), fec.vias);
   }
   routeCacheEvpnViaConfig = evpn;
   routeCacheConfig = routeConfig(state, &VrfState::routeCache);
   secondRouteConfig = routeConfig(state, &VrfState::secondRouteConfig);
}

void Inputs::tunnelsAre(State const& state) {
   auto const fib = Zam::makePtr<Tunnel::TunnelFib::TunnelFib>();
   for (auto const& tunnel : state.tunnels) {
      fib->entryIs(tunnel.tunnelId, tunnel.value);
   }
   for (LabelStack const& stack : state.labelStacks) {
      fib->labelStackEncapIs(stack.id, stack.labels);
   }
   tunnelFib = fib;
   std::apply([&state](auto&... table) { (addTunnels(table, state), ...); }, tunnelTables);
   auto const names = Zam::makePtr<Tunnel::TunnelTable::ProtocolTunnelNameStatus>();
   for (auto const& tunnel : state.tunnelNames) {
      names->tunnelNameIs(tunnel.tunnelId, Zam::String(tunnel.value));
   }
   protocolTunnelNameStatus = names;
}

void Inputs::policiesAre(State const& state) {
   auto const policies = Zam::makePtr<SrTePolicy::PolicyStatus>();
   for (Policy const& policy : state.policies) {
      policies->policyIs(policy.key, policy.tunnelId);
   }
   policyStatus = policies;
   auto const overrides = Zam::makePtr<SrTePolicy::CbfFecOverrideMap>();
   for (FecOverride const& fec : state.fecOverrides) {
      overrides->fecOverrideIs(fec.fecId.value(), fec.classes);
   }
   cbfFecOverrideMap = overrides;
   auto const algorithms = Zam::makePtr<FlexAlgo::Config>();
   for (FlexAlgorithm const& algorithm : state.flexAlgorithms) {
      algorithms->algorithmNameIs(algorithm.id, Zam::String(algorithm.name));
   }
   flexAlgoConfig = algorithms;
}

Inputs mountStateDir(std::string const& stateDir) {
   return ofOneLoad(stateDir, [&](Zam::Ptr<Hive::EntityManager const> const& manager) {
      Inputs inputs(manager, readStateIn(*manager));
      inputs.fewMounted();
      inputs.from_ = {stateDir, StateDirId(manager->directory())};
      return inputs;
   });
}

Inputs mountPrivately(State const& state) {
   PrivateStateDir const dir;
   std::optional<Inputs> inputs;
   toldOf("private", dir.path(), [&] {
      Hive::EntityManager::stateDirIs(dir.path());
      auto const manager = Zam::makePtr<Hive::EntityManager>(dir.path());
      writeTables(state, *manager);
      inputs.emplace(manager, state);
      inputs->allMounted();
   });
   return *std::move(inputs);
}

}  // namespace state
