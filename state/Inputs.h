#pragma once

#include "FlexAlgo/Config.h"
#include "Hive/EntityManager.h"
#include "Interface/AllIntfConfigDir.h"
#include "Interface/IntfStatus.h"
#include "Ip/Status.h"
#include "Ip6/Status.h"
#include "Kiv/nexthopgroup/NexthopGroupCounterHelper.h"
#include "L3/Config.h"
#include "NexthopGroup/EntryStatus.h"
#include "Routing/AttachedRouteStatus.h"
#include "Routing/ConfigGen.h"
#include "Routing/Hardware/NexthopGroupStatus.h"
#include "Routing/Hardware/Status.h"
#include "Routing/NexthopGroup/Config.h"
#include "Routing/Rib/RouteCache/Evpn/ViaConfig.h"
#include "Routing/Rib/RouteConfig.h"
#include "Routing/RouteList.h"
#include "Routing6/Hardware/Status.h"
#include "SrTePolicy/CbfFecOverrideMap.h"
#include "SrTePolicy/PolicyStatus.h"
#include "Tunnel/TunnelFib/TunnelFib.h"
#include "Tunnel/TunnelTable/ProtocolTunnelNameStatus.h"
#include "Tunnel/TunnelTable/TunnelTables.h"
#include "Vault/ForwardingStatus.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/RouteStatus.h"
#include "Vault/UnprogrammedRouteStatus.h"
#include "Vrf/VrfIdMap/Status.h"
#include "state/ConfigFile.h"
#include "state/Export.h"
#include "state/State.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>

namespace state {

// What the operations of the library read, made from a state directory's tables and from the entities of a state. The
// handles keep what they lead to alive; a table that is not there is a null handle.
class KIV_STATE_EXPORT Inputs {
 public:
   template <class T>
   using Table = Zam::Ptr<T const>;

   // In the order in which the sorters take them.
   using TunnelTables =
       std::tuple<Table<Tunnel::TunnelTable::EvpnVxlanTunnelTable>, Table<Tunnel::TunnelTable::IsisSrTunnelTable>,
                  Table<Tunnel::TunnelTable::StaticTunnelTable>, Table<Tunnel::TunnelTable::LdpTunnelTable>,
                  Table<Tunnel::TunnelTable::BgpLuTunnelTable>, Table<Tunnel::TunnelTable::NexthopGroupTunnelTable>,
                  Table<Tunnel::TunnelTable::RsvpLerTunnelTable>, Table<Tunnel::TunnelTable::IsisFlexAlgoTunnelTable>>;

   // What each address family has of its own, for one VRF.
   struct OfVrf {
      Table<Routing::ConfigGen> routingConfig{};
      Table<Routing::RouteList> routeList{};         // as configured
      Table<Routing::RouteList> routeListDynamic{};  // added while the box runs
   };
   struct Vrf {
      VrfId id = 0;
      L3::VrfName name{};
      OfVrf ip{};
      OfVrf ip6{};
      std::optional<Lumen::RouteDistinguisher> routeDistinguisher{};
      std::optional<Lumen::RouteDistinguisher> autoRouteDistinguisher{};
   };

   // Mounts what all VRFs share; the route tables are mounted when they are asked for.
   Inputs(Zam::Ptr<Hive::EntityManager const> manager, State const& state);
   // Mounts now what is mounted when it is asked for; the state directory may go afterwards.
   void allMounted();

   std::vector<Vrf> const& vrfs() const { return vrfs_; }
   Vrf const* vrf(std::string_view name) const;
   Table<Vault::Fib::RouteStatus> routes(VrfId vrfId);
   Table<Vault::Fib6::RouteStatus> routes6(VrfId vrfId);
   // What the entries of nexthop groups have carried; mounted when it is asked for.
   Table<Kiv::NexthopGroupCounterHelper> nexthopGroupCounters();
   // Null when there is no interface of that name.
   Table<::Interface::IntfStatus> intfStatus(std::string_view name) const;

   Table<Vault::Fib::ForwardingStatus> forwardingStatus{};
   Table<Vault::Fib6::ForwardingStatus> forwarding6Status{};
   Table<Vault::FibGen::ForwardingStatus> forwardingGenStatus{};
   Table<Vault::Fib::ForwardingStatus> policyForwardingStatus{};
   Table<Vault::Fib::UnprogrammedRouteStatus> unprogrammedRouteStatus{};
   Table<Vault::KernelUnprogrammedRoute::UnprogrammedRoute> kernelUnprogrammedRoute{};

   Table<::Vrf::VrfIdMap::Status> vrfIdMap{};
   Table<::Interface::AllIntfConfigDir> allIntfConfig{};
   Table<L3::Config> l3Config{};
   Table<::Ip::Status> ipStatus{};
   Table<::Ip6::Status> ip6Status{};
   Table<Routing::Hardware::Status> routingHardwareStatus{};
   Table<Routing6::Hardware::Status> routing6HardwareStatus{};
   Table<Routing::AttachedRouteStatus> attachedRouteStatus{};
   Table<Routing::AttachedRouteStatus> attachedRoute6Status{};
   Table<::NexthopGroup::EntryStatus> nexthopGroupEntryStatus{};
   Table<Routing::NexthopGroup::Config> nexthopGroupConfig{};
   Table<Routing::Hardware::NexthopGroupStatus> nexthopGroupHardwareStatus{};
   Table<Routing::Rib::RouteConfig> routeCacheConfig{};  // null while the route cache has no routes
   Table<Routing::Rib::RouteCache::Evpn::ViaConfig> routeCacheEvpnViaConfig{};
   Table<Routing::Rib::RouteConfig> secondRouteConfig{};  // null while it has no routes

   Table<Tunnel::TunnelFib::TunnelFib> tunnelFib{};
   TunnelTables tunnelTables{};
   Table<Tunnel::TunnelTable::ProtocolTunnelNameStatus> protocolTunnelNameStatus{};
   Table<SrTePolicy::PolicyStatus> policyStatus{};
   Table<SrTePolicy::CbfFecOverrideMap> cbfFecOverrideMap{};
   Table<FlexAlgo::Config> flexAlgoConfig{};

 private:
   void vrfsAre(State const& state);
   void interfacesAre(State const& state);
   void nexthopGroupsAre(State const& state);
   void routeCacheIs(State const& state);
   void tunnelsAre(State const& state);
   void policiesAre(State const& state);

   // The place that the tables are mounted from, and which directory was there.
   struct From {
      std::string stateDir;
      StateDirId id;
   };

   template <class T>
   Table<T> mounted(std::map<VrfId, Table<T>>& tables, VrfId vrfId, std::string_view below);
   void fewMounted();
   // Hive::StateError when another state was loaded meanwhile.
   void checkLoad() const;
   friend KIV_STATE_EXPORT Inputs mountStateDir(std::string const& stateDir);

   Zam::Ptr<Hive::EntityManager const> manager_;
   std::optional<From> from_;
   std::vector<Vrf> vrfs_;
   std::map<VrfId, Table<Vault::Fib::RouteStatus>> routes_;
   std::map<VrfId, Table<Vault::Fib6::RouteStatus>> routes6_;
   Table<Kiv::NexthopGroupCounterHelper> nexthopGroupCounters_{};
   std::map<std::string, Table<::Interface::IntfStatus>, std::less<>> intfStatus_;
};

// The inputs of a state directory, and those of a state that is nowhere but in this process.
KIV_STATE_EXPORT Inputs mountStateDir(std::string const& stateDir);
KIV_STATE_EXPORT Inputs mountPrivately(State const& state);

}  // namespace state
