#include "Kiv/PlatformTypes.h"

#include "FlexAlgo/Config.h"
#include "FlexCounters/CounterTable.h"
#include "Hive/EntityManager.h"
#include "Interface/AllIntfConfigDir.h"
#include "Interface/IntfStatus.h"
#include "Ip/Config.h"
#include "Ip/Status.h"
#include "Ip6/Config.h"
#include "Ip6/Status.h"
#include "L3/Config.h"
#include "Lumen/EthAddr.h"
#include "Lumen/Ip6AddrWithMask.h"
#include "Lumen/IpAddrWithMask.h"
#include "Lumen/IpGenPrefix.h"
#include "Lumen/MplsLabelOperation.h"
#include "Lumen/RouteDistinguisher.h"
#include "Lumen/Vni.h"
#include "NexthopGroup/EntryStatus.h"
#include "NexthopGroup/NexthopGroupEntryToCounterKeyTable.h"
#include "Routing/AttachedRouteStatus.h"
#include "Routing/ConfigGen.h"
#include "Routing/Hardware/NexthopGroupStatus.h"
#include "Routing/Hardware/Status.h"
#include "Routing/NexthopGroup/Config.h"
#include "Routing/Rib/RouteCache/Evpn/ViaConfig.h"
#include "Routing/Rib/RouteConfig.h"
#include "Routing/RouteInput.h"
#include "Routing6/Hardware/Status.h"
#include "SrTePolicy/CbfFecOverrideMap.h"
#include "SrTePolicy/PolicyStatus.h"
#include "Tunnel/CliSupport/CachedTunVia.h"
#include "Tunnel/CliSupport/ViaText.h"
#include "Tunnel/IpTunnelEncap.h"
#include "Tunnel/TunnelFib/TunnelFib.h"
#include "Tunnel/TunnelTable/ProtocolTunnelNameStatus.h"
#include "Tunnel/TunnelTable/TunnelTables.h"
#include "Vault/ForwardingStatus.h"
#include "Vault/KernelUnprogrammedRoute.h"
#include "Vault/RouteStatus.h"
#include "Vault/RouteText.h"
#include "Vault/UnprogrammedRouteStatus.h"
#include "Vrf/VrfIdMap/Status.h"
#include "Zam/Dir.h"
#include "Zam/TypeRegistry.h"

// Values can be printed, compared, hashed, made from their text and passed on; entities be printed, compared and passed
// on. What else they offer is for the agents that own them.
namespace Kiv {

namespace {

void registerValues(Zam::TypeRegistry& registry) {
   registry.value<Lumen::IpAddr>("Lumen::IpAddr");
   registry.value<Lumen::Ip6Addr>("Lumen::Ip6Addr");
   registry.value<Lumen::IpGenAddr>("Lumen::IpGenAddr");
   registry.value<Lumen::Prefix>("Lumen::Prefix");
   registry.value<Lumen::Ip6Prefix>("Lumen::Ip6Prefix");
   registry.value<Lumen::IpGenPrefix>("Lumen::IpGenPrefix");
   registry.value<Lumen::IpAddrWithMask>("Lumen::IpAddrWithMask");
   registry.value<Lumen::Ip6AddrWithMask>("Lumen::Ip6AddrWithMask");
   registry.value<Lumen::IntfId>("Lumen::IntfId");
   registry.value<Lumen::MplsLabel>("Lumen::MplsLabel");
   registry.value<Lumen::MplsLabelOperation>("Lumen::MplsLabelOperation");
   registry.value<Lumen::EthAddr>("Lumen::EthAddr");
   registry.value<Lumen::Vni>("Lumen::Vni");
   registry.value<Lumen::RouteDistinguisher>("Lumen::RouteDistinguisher");
   registry.value<L3::VrfName>("L3::VrfName");
   registry.value<Vault::Fib::FecId>("Vault::Fib::FecId");
   registry.value<FlexCounters::ChipMask>();
   registry.value<Routing::RouteKey>();
   registry.value<Routing::Via>();
   registry.value<SrTePolicy::PolicyKey>();
   registry.value<Tunnel::TunnelTable::EvpnVxlanTunnelEntry>();
   registry.enumeration<Routing::RouteType>("Routing::RouteType");
   registry.enumeration<Routing::NexthopGroup::NexthopGroupType>("Routing::NexthopGroup::NexthopGroupType");
   registry.enumeration<Routing::Rib::DecapActionType>("Routing::Rib::DecapActionType");
   registry.enumeration<Vault::Fib::ForwardingAction>("Vault::Fib::ForwardingAction");
}

// Plain records, by the attributes of their text.
template <class Attributes, class Record>
void registerRecord(Zam::TypeRegistry& registry, Record (Attributes::*record)() const) {
   auto builder = registry.value<Record>(Zam::descriptionOf<Attributes>.typeName);
   builder.constructor(
       +[] { return Record(); }, "The default value.");
   builder.template constructorFrom<Attributes>([record](Attributes const& from) { return (from.*record)(); },
                                                "From all attributes.");
   Zam::forEachAttribute<Attributes>([&builder]<class At>(At const& at) {
      builder.attributeBy(
          at.name, [member = at.member](Record const& of) { return Attributes::of(of).*member; }, at.line);
   });
}

void registerRecords(Zam::TypeRegistry& registry) {
   using Vault::RouteAttributes;
   registerRecord(registry, &RouteAttributes<Vault::Fib::Route>::route);
   registerRecord(registry, &RouteAttributes<Vault::Fib6::Route>::route);
   registerRecord(registry, &Tunnel::CliSupport::ViaAttributes::via);
   registry.enumeration<Tunnel::IpEncapType>("Tunnel::IpEncapType");
   registry.value<Tunnel::IpTunnelEncap>();
   registry.value<Tunnel::CliSupport::CachedIpTunnelInfo>("Tunnel::CliSupport::CachedIpTunnelInfo")
       .attribute("name", &Tunnel::CliSupport::CachedIpTunnelInfo::name, "The kind of header, as displays call it.")
       .attribute("encap", &Tunnel::CliSupport::CachedIpTunnelInfo::encap, "The header.");
}

void registerConfiguration(Zam::TypeRegistry& registry) {
   registry.entity<FlexAlgo::Config>("FlexAlgo::Config");
   registry.entity<Hive::EntityManager>("Hive::EntityManager");
   registry.entity<Interface::AllIntfConfigDir>("Interface::AllIntfConfigDir");
   registry.entity<Interface::IntfStatus>("Interface::IntfStatus");
   registry.entity<Ip::Config>("Ip::Config");
   registry.entity<Ip6::Config>("Ip6::Config");
   registry.entity<L3::Config>("L3::Config");
   registry.entity<Routing::ConfigGen>("Routing::ConfigGen");
   registry.entity<Routing::NexthopGroup::Config>("Routing::NexthopGroup::Config");
   registry.entity<Routing::Rib::RouteCache::Evpn::ViaConfig>("Routing::Rib::RouteCache::Evpn::ViaConfig");
   registry.entity<Routing::Rib::RouteConfig>("Routing::Rib::RouteConfig");
   registry.entity<Routing::Route>("Routing::Route");
   registry.entity<Routing::RouteInput>("Routing::RouteInput");
   registry.entity<Routing::RouteList>("Routing::RouteList");
   registry.entity<SrTePolicy::CbfFecOverrideMap>("SrTePolicy::CbfFecOverrideMap");
   registry.entity<Zam::Dir<Zam::PtrInterface>>("Zam::Dir");
}

void registerStatus(Zam::TypeRegistry& registry) {
   registry.entity<Ip::Status>("Ip::Status");
   registry.entity<Ip6::Status>("Ip6::Status");
   registry.entity<Routing::AttachedRouteStatus>("Routing::AttachedRouteStatus");
   registry.entity<Routing::Hardware::NexthopGroupStatus>("Routing::Hardware::NexthopGroupStatus");
   registry.entity<Routing::Hardware::Status>("Routing::Hardware::Status");
   registry.entity<Routing6::Hardware::Status>("Routing6::Hardware::Status");
   registry.entity<SrTePolicy::PolicyStatus>("SrTePolicy::PolicyStatus");
   registry.entity<Vrf::VrfIdMap::Status>("Vrf::VrfIdMap::Status");
}

void registerSharedTables(Zam::TypeRegistry& registry) {
   registry.entity<FlexCounters::CounterTable>("FlexCounters::CounterTable");
   registry.entity<NexthopGroup::EntryStatus>("NexthopGroup::EntryStatus");
   registry.entity<Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable>(
       "Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable");
   registry.entity<Vault::Fib::RouteStatus>("Vault::Fib::RouteStatus");
   registry.entity<Vault::Fib6::RouteStatus>("Vault::Fib6::RouteStatus");
   registry.entity<Vault::Fib::ForwardingStatus>("Vault::Fib::ForwardingStatus");
   registry.entity<Vault::Fib6::ForwardingStatus>("Vault::Fib6::ForwardingStatus");
   registry.entity<Vault::FibGen::ForwardingStatus>("Vault::FibGen::ForwardingStatus");
   registry.entity<Vault::Fib::UnprogrammedRouteStatus>("Vault::Fib::UnprogrammedRouteStatus");
   registry.entity<Vault::KernelUnprogrammedRoute::UnprogrammedRoute>(
       "Vault::KernelUnprogrammedRoute::UnprogrammedRoute");
}

void registerTunnels(Zam::TypeRegistry& registry) {
   registry.entity<Tunnel::CliSupport::CachedTunVia>("Tunnel::CliSupport::CachedTunVia");
   registry.entity<Tunnel::TunnelFib::TunnelFib>("Tunnel::TunnelFib::TunnelFib");
   registry.entity<Tunnel::TunnelTable::EvpnVxlanTunnelTable>("Tunnel::TunnelTable::EvpnVxlanTunnelTable");
   registry.entity<Tunnel::TunnelTable::IsisSrTunnelTable>("Tunnel::TunnelTable::IsisSrTunnelTable");
   registry.entity<Tunnel::TunnelTable::StaticTunnelTable>("Tunnel::TunnelTable::StaticTunnelTable");
   registry.entity<Tunnel::TunnelTable::LdpTunnelTable>("Tunnel::TunnelTable::LdpTunnelTable");
   registry.entity<Tunnel::TunnelTable::BgpLuTunnelTable>("Tunnel::TunnelTable::BgpLuTunnelTable");
   registry.entity<Tunnel::TunnelTable::NexthopGroupTunnelTable>("Tunnel::TunnelTable::NexthopGroupTunnelTable");
   registry.entity<Tunnel::TunnelTable::RsvpLerTunnelTable>("Tunnel::TunnelTable::RsvpLerTunnelTable");
   registry.entity<Tunnel::TunnelTable::IsisFlexAlgoTunnelTable>("Tunnel::TunnelTable::IsisFlexAlgoTunnelTable");
   registry.entity<Tunnel::TunnelTable::ProtocolTunnelNameStatus>("Tunnel::TunnelTable::ProtocolTunnelNameStatus");
}

}  // namespace

void registerPlatformTypes() {
   auto& registry = Zam::TypeRegistry::instance();
   registerValues(registry);
   registerRecords(registry);
   registerConfiguration(registry);
   registerStatus(registry);
   registerSharedTables(registry);
   registerTunnels(registry);
}

}  // namespace Kiv
