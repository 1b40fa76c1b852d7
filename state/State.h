#pragma once

#include "FlexAlgo/Config.h"
#include "FlexCounters/CounterTable.h"
#include "L3/VrfName.h"
#include "Lumen/IntfId.h"
#include "Lumen/Ip6AddrWithMask.h"
#include "Lumen/IpAddrWithMask.h"
#include "Lumen/IpGenPrefix.h"
#include "Lumen/MplsLabelOperation.h"
#include "Lumen/RouteDistinguisher.h"
#include "Routing/NexthopGroup/Config.h"
#include "Routing/NexthopGroup/NexthopGroupId.h"
#include "Routing/Rib/RouteConfig.h"
#include "SrTePolicy/CbfFecOverrideMap.h"
#include "SrTePolicy/PolicyStatus.h"
#include "Tunnel/IpTunnelEncap.h"
#include "Tunnel/TunnelFib/TunnelFib.h"
#include "Tunnel/TunnelTable/TunnelTables.h"
#include "Vault/Fib.h"
#include "Vrf/VrfId.h"
#include "state/StaticRoutes.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

// The whole state of a box as plain values: what a snapshot file describes, what the Linux kernel tells, and what the
// shared tables and entities of a state directory are made from. Whoever fills it vouches that ids and prefixes do not
// repeat and that VRF and interface references lead somewhere; StateWriter relies on it. Copies share their static
// routes.
namespace state {

using VrfId = Vrf::VrfIdMap::VrfId;

struct Interface {
   Lumen::IntfId intfId{};  // named
   std::string description{};
   VrfId vrfId = Vrf::VrfIdMap::defaultVrf;
   bool loopback = false;
   bool linkUp = true;
   std::vector<Lumen::IpAddrWithMask> addresses{};  // the primary, then the secondary ones
   std::vector<Lumen::Ip6AddrWithMask> addresses6{};
   Tunnel::IpTunnelEncap tunnel{};  // of a tunnel interface

   bool operator==(Interface const&) const = default;
};

struct UnprogrammedRoute {
   Lumen::IpGenPrefix prefix{};
   U32 error = 0;  // what the kernel answered, an errno; unused for hardware

   bool operator==(UnprogrammedRoute const&) const = default;
};

// A host that was resolved on an interface.
struct AttachedRoute {
   Lumen::IpGenAddr address{};
   Lumen::IntfId intfId{};
   bool active = true;

   bool operator==(AttachedRoute const&) const = default;
};

// A route that a route configuration knows, whether or not the FIB holds it.
struct CachedRoute {
   Lumen::IpGenPrefix prefix{};
   Routing::Rib::RouteConfigEntry entry{};

   bool operator==(CachedRoute const&) const = default;
};

// A nexthop group that the hardware forwards by, and which of its entries.
struct ProgrammedGroup {
   Routing::NexthopGroup::NexthopGroupId id = 0;
   std::vector<U32> entries{};

   bool operator==(ProgrammedGroup const&) const = default;
};

struct VrfState {
   VrfId id = Vrf::VrfIdMap::defaultVrf;
   L3::VrfName name{};
   bool routing = true;  // IPv4 packets are routed
   bool routing6 = true;
   std::optional<Lumen::RouteDistinguisher> routeDistinguisher{};      // as configured
   std::optional<Lumen::RouteDistinguisher> autoRouteDistinguisher{};  // as assigned by the box
   std::vector<Vault::Fib::Route> routes{};
   std::vector<Vault::Fib6::Route> routes6{};
   std::vector<UnprogrammedRoute> hardwareUnprogrammed{};
   std::vector<UnprogrammedRoute> kernelUnprogrammed{};
   StaticRoutes staticRoutes{};   // as configured
   StaticRoutes dynamicRoutes{};  // added while the box runs
   std::vector<AttachedRoute> attachedRoutes{};
   std::vector<CachedRoute> routeCache{};
   std::vector<CachedRoute> secondRouteConfig{};
   std::vector<ProgrammedGroup> programmedGroups{};

   bool operator==(VrfState const&) const = default;
};

struct NexthopGroup {
   Routing::NexthopGroup::NexthopGroupId id = 0;  // 0 while it has none
   std::string name{};
   Routing::NexthopGroup::NexthopGroupType type = Routing::NexthopGroup::NexthopGroupType::invalid;
   std::vector<std::pair<U32, Routing::NexthopGroup::NexthopGroupEntry>> entries{};  // by index

   bool operator==(NexthopGroup const&) const = default;
};

struct NexthopGroupCounter {
   Routing::NexthopGroup::NexthopGroupId groupId = 0;
   U32 entry = 0;
   U64 chips = 1;  // those that have the counter, at least one
   FlexCounters::Counter current{};
   std::optional<FlexCounters::Counter> cleared{};  // what it was when the counters were last cleared

   bool operator==(NexthopGroupCounter const&) const = default;
};

struct EvpnFec {
   Vault::Fib::FecId fecId{};  // of adjacency type 24
   std::vector<Tunnel::TunnelTable::EvpnVxlanTunnelEntry> vias{};

   bool operator==(EvpnFec const&) const = default;
};

// What a table knows of a tunnel.
template <class T>
struct OfTunnel {
   Tunnel::TunnelId tunnelId = 0;
   T value{};

   bool operator==(OfTunnel const&) const = default;
};

struct LabelStack {
   Tunnel::TunnelFib::EncapId id = 0;
   Lumen::MplsLabelOperation labels{};

   bool operator==(LabelStack const&) const = default;
};

struct Policy {
   SrTePolicy::PolicyKey key{};
   Tunnel::TunnelId tunnelId = 0;

   bool operator==(Policy const&) const = default;
};

struct FecOverride {
   Vault::Fib::FecId fecId{};
   std::vector<SrTePolicy::CbfClass> classes{};  // of different code points

   bool operator==(FecOverride const&) const = default;
};

struct FlexAlgorithm {
   static constexpr FlexAlgo::AlgorithmId minId = 128;

   FlexAlgo::AlgorithmId id = minId;
   std::string name{};

   bool operator==(FlexAlgorithm const&) const = default;
};

struct State {
   std::vector<Interface> interfaces{};
   std::vector<VrfState> vrfs{};  // in the order of their ids

   std::vector<Vault::Fib::Fec> fecs{};
   std::vector<Vault::Fib6::Fec> fecs6{};
   std::vector<Vault::FibGen::Fec> fecsGen{};
   std::vector<Vault::Fib::Fec> policyFecs{};
   bool genericFib = false;  // routes use the FECs of fecsGen, whatever their adjacency type

   std::vector<NexthopGroup> nexthopGroups{};
   std::vector<NexthopGroupCounter> nexthopGroupCounters{};
   std::vector<EvpnFec> evpnFecs{};

   std::vector<OfTunnel<Tunnel::TunnelFib::Entry>> tunnels{};
   std::vector<LabelStack> labelStacks{};
   // Each in the table of its tunnel's type.
   std::vector<OfTunnel<Tunnel::TunnelTable::TunnelEntry>> tunnelEntries{};
   std::vector<OfTunnel<Tunnel::TunnelTable::EvpnVxlanTunnelEntry>> evpnTunnels{};
   std::vector<OfTunnel<std::string>> tunnelNames{};
   std::vector<Policy> policies{};
   std::vector<FecOverride> fecOverrides{};
   std::vector<FlexAlgorithm> flexAlgorithms{};

   // How many vias the hardware takes per route, and entries per nexthop group; 0 for no limit.
   U32 maxVias = 0;
   U32 maxVias6 = 0;
   U32 maxNexthopGroupSize = 0;

   bool operator==(State const&) const = default;
};

}  // namespace state
