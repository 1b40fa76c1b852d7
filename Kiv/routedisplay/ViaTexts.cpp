#include "Kiv/routedisplay/ViaTexts.h"

#include "Kiv/routedisplay/PolicyResolution.h"

#include <string>

namespace Kiv {

namespace {

using Tunnel::CliSupport::TunnelResolver;
using Ways = TunnelResolver::Ways;

constexpr std::string_view unknownNexthopGroup = "NexthopGroupUnknown";

// The address, or the family's unspecified address for a via whose destination is on its own link. A via that leads
// into a tunnel, a group or another FEC leads there, whatever it says of an address.
template <class Family>
Zam::String nexthopText(CachedVia const& via) {
   if (!via.hop.isZero()) {
      return via.hop.stringValue();
   }
   bool const isOnLink = via.intfId.isNamed() || (!via.intfId.isValid() && !via.hop.isEmpty());
   return isOnLink ? typename Family::Addr().stringValue() : std::string();
}

template <class Family>
L3::VrfName vrfName(RouteSorterOf<Family> const& sorter, Vrf::VrfIdMap::VrfId vrfId) {
   auto const& vrfIdMap = sorter.inputs().vrfIdMap;
   auto const* const name = vrfIdMap ? vrfIdMap->vrfName(vrfId) : nullptr;
   return name != nullptr ? *name : L3::VrfName("unknown");
}

// One via's, at its place in display order.
template <class Family>
class ViaPreparation {
 public:
   ViaPreparation(RouteSorterOf<Family> const& sorter, TunnelResolver& tunnels, CachedFec& fec)
       : sorter_(sorter),
         tunnels_(tunnels),
         fec_(fec) {}

   void prepare(U16 index, CachedVia const& via) {
      fec_.nexthopAddr.insertOrReplace(index, nexthopText<Family>(via));
      fec_.interface.insertOrReplace(index, interfaceText(via));
      if (via.viaLabel.isLabel()) {
         fec_.label.insertOrReplace(index, via.viaLabel);
         fec_.viaLabelStack.insertOrReplace(index, {Lumen::MplsLabelOperation::Operation::push, {}});
      }
      if (!via.viaWeight.empty()) {
         fec_.weightText.insertOrReplace(index, via.viaWeight.bytes() + "/" + std::to_string(fec_.weightSum));
      }
      if (via.isBackup) {
         fec_.viaTypeString.insertOrReplace(index, "backup");
      }
      prepareInterface(index, via);
      prepareTarget(index, via);
   }

 private:
   void prepareInterface(U16 index, CachedVia const& via) {
      auto const& in = sorter_.inputs();
      if (via.vrfId != Vrf::VrfIdMap::noVrf && via.vrfId != in.vrfId) {
         fec_.vrfId.insertOrReplace(index, via.vrfId);
         fec_.vrfName.insertOrReplace(index, via.vrfName);
      }
      auto const* const config = in.allIntfConfig ? in.allIntfConfig->intfConfig(via.intfId) : nullptr;
      if (config != nullptr && !config->description.empty()) {
         fec_.interfaceDescription.insertOrReplace(index, config->description);
      }
      if (config != nullptr && config->tunnel && via.intfId.isNamed()) {
         fec_.ipEncapTunInfo.insertOrReplace(index, Tunnel::CliSupport::CachedIpTunnelInfo(config->tunnel));
      }
   }

   // What the via leads to besides an interface.
   void prepareTarget(U16 index, CachedVia const& via) {
      if (via.isForwardingVrfAction()) {
         bool const decap = via.forwardingAction == Vault::Fib::ForwardingAction::decapForwardVrf;
         auto const type = decap ? Routing::Rib::DecapActionType::ipIp : Routing::Rib::DecapActionType::none;
         fec_.fallbackVia.insertOrReplace(index, {{}, type, vrfName(sorter_, via.forwardingVrf())});
      } else if (via.intfId.isNexthopGroup()) {
         auto const id = via.intfId.nexthopGroupId();
         auto const name = sorter_.nexthopGroupName(id);
         fec_.nhgVia.insertOrReplace(index, {{}, id, name.empty() ? unknownNexthopGroup : name});
         fec_.nhgName.insertOrReplace(index, name.empty() ? unknownNexthopGroup : name);
      } else if (auto const* const vxlan = fec_.vxlanOfVia.find(via); vxlan != nullptr) {
         fec_.vxlanEntry.insertOrReplace(index, *vxlan);
         if (via.hop.isZero()) {
            fec_.nexthopAddr.insertOrReplace(index, {});  // its VTEP is where it goes, not its own link
         }
      } else if (via.tunnelId() != 0) {
         prepareTunnel(index, via);
      }
   }

   void prepareTunnel(U16 index, CachedVia const& via) {
      auto const tunnelId = via.tunnelId();
      fec_.tunVia.insertOrReplace(index, tunnels_.makeCachedTunViaWithName(tunnelId, Ways::primary));
      if (tunnels_.hasBackup(tunnelId)) {
         fec_.tunViaBackupVia.insertOrReplace(index, tunnels_.makeCachedTunViaWithName(tunnelId, Ways::backup));
      }
      if (Tunnel::tunnelType(tunnelId) == Tunnel::TunnelType::srTePolicy) {
         auto policies = policyInfoSet(sorter_, tunnels_, {{.tunnelId = tunnelId}});
         policies.policyInfo.find(0)->viaLabel = via.viaLabel;
         fec_.tunViaPolicyInfoSet.insertOrReplace(index, std::move(policies));
      }
   }

   RouteSorterOf<Family> const& sorter_;
   TunnelResolver& tunnels_;
   CachedFec& fec_;
};

void clearTexts(CachedFec& fec) {
   fec.viaTypeString.clear();
   fec.nexthopAddr.clear();
   fec.interface.clear();
   fec.interfaceDescription.clear();
   fec.vrfId.clear();
   fec.vrfName.clear();
   fec.weightText.clear();
   fec.label.clear();
   fec.viaLabelStack.clear();
   fec.nhgVia.clear();
   fec.nhgName.clear();
   fec.fallbackVia.clear();
   fec.tunVia.clear();
   fec.tunViaBackupVia.clear();
   fec.tunViaPolicyInfoSet.clear();
   fec.ipEncapTunInfo.clear();
   fec.vxlanEntry.clear();
}

}  // namespace

Zam::String interfaceText(CachedVia const& via) {
   if (via.isForwardingVrfAction() || via.intfId.isDynamicTunnel()) {
      return {};
   }
   return via.intfId.isNamed() ? Zam::String(via.intfId.name()) : Zam::String(via.intfId.stringValue());
}

bool isDirectlyConnected(std::string_view nexthop) {
   return nexthop == "0.0.0.0" || nexthop == "::";
}

template <class Family>
void prepareViaTexts(RouteSorterOf<Family> const& sorter, TunnelResolver& tunnels, CachedFec& fec) {
   clearTexts(fec);
   ViaPreparation<Family> preparation(sorter, tunnels, fec);
   U16 index = 0;
   for (auto const& [via, present] : fec.via()) {
      preparation.prepare(index++, via);
   }
   fec.policyInfoSet = policyInfoSet(sorter, tunnels, fec.policyVias);
   fec.cbfInfoSet = cbfInfoSet(sorter, tunnels, fec.cbfClasses);
   fec.textsPrepared = true;
}

template <class Family>
Tunnel::CliSupport::TunnelSources tunnelSources(RouteSorterOf<Family> const& sorter) {
   auto const& in = sorter.inputs();
   return {in.tunnelFib,
           {in.isisSrTunnelTable, in.staticTunnelTable, in.ldpTunnelTable, in.bgpLuTunnelTable,
            in.nexthopGroupTunnelTable, in.rsvpLerTunnelTable, in.isisFlexAlgoTunnelTable},
           in.protocolTunnelNameStatus,
           in.flexAlgoConfig,
           [&sorter](U32 id) { return sorter.nexthopGroupName(id); }};
}

template void prepareViaTexts(RouteSorterOf<Ipv4> const&, TunnelResolver&, CachedFec&);
template void prepareViaTexts(RouteSorterOf<Ipv6> const&, TunnelResolver&, CachedFec&);
template Tunnel::CliSupport::TunnelSources tunnelSources(RouteSorterOf<Ipv4> const&);
template Tunnel::CliSupport::TunnelSources tunnelSources(RouteSorterOf<Ipv6> const&);

}  // namespace Kiv
