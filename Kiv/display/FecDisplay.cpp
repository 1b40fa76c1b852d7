#include "Kiv/display/FecDisplay.h"

#include "Kiv/display/PolicyResolution.h"
#include "Tunnel/CliSupport/Weights.h"

#include <algorithm>

namespace Kiv {

namespace {

using Tunnel::CliSupport::TunnelResolver;

constexpr std::string_view unknownNexthopGroup = "NexthopGroupUnknown";

std::string_view groupName(FecStore const& store, Routing::NexthopGroup::NexthopGroupId id) {
   auto const name = store.sources().nexthopGroupName(id);
   return name.empty() ? unknownNexthopGroup : name;
}

Tunnel::CliSupport::TunnelSources tunnelSources(FecStore const& store) {
   auto sources = store.sources().tunnels;
   sources.nexthopGroupName = [&store](U32 id) { return groupName(store, id); };
   return sources;
}

// A via whose destination is on its own link. One that leads into a tunnel, a group or another FEC leads there,
// whatever it says of an address.
bool isOnLink(Lumen::IpGenAddr const& hop, Lumen::IntfId const& intfId) {
   return hop.isZero() && (intfId.isNamed() || !intfId.isValid());
}

}  // namespace

PolicyInfoSet const& DisplayFec::policies() const {
   return display_->policies(*record_).policies;
}

CbfInfoSet const& DisplayFec::classes() const {
   return display_->policies(*record_).classes;
}

std::optional<GroupTarget> DisplayFec::nexthopGroup() const {
   for (auto const& via : record_->vias()) {
      auto const& intfId = display_->intfId(via);
      if (intfId.isNexthopGroup() && !via.isForwardingVrfAction()) {
         return display_->group(intfId.nexthopGroupId());
      }
   }
   return std::nullopt;
}

bool DisplayFec::isNexthopGroup() const {
   auto const vias = record_->vias();
   return !vias.empty() && std::all_of(vias.begin(), vias.end(), [this](auto const& via) {
      return display_->intfId(via).isNexthopGroup() && !via.isForwardingVrfAction();
   });
}

FecDisplay::FecDisplay(Zam::Ptr<FecStore> store) : store_(std::move(store)), tunnels_(tunnelSources(*store_)) {}

std::optional<DisplayFec> FecDisplay::hostFec(Vault::Fib::FecId fecId, bool isLinkRoute) {
   auto const shown = fec(fecId);
   if (shown && shown->record_->preparedVias == shown->evpnVias().size()) {
      auto& record = store_->record(shown->number());
      record.hostLink = isLinkRoute;
      record.preparedVias = record.viaCount;
   }
   return shown;
}

std::string_view FecDisplay::vrfName(Vrf::VrfIdMap::VrfId vrfId) const {
   auto const& vrfIdMap = store_->sources().vrfIdMap;
   auto const* const name = vrfIdMap ? vrfIdMap->vrfName(vrfId) : nullptr;
   return name != nullptr ? std::string_view(*name) : "unknown";
}

DisplayVia FecDisplay::via(FecRecord const& record, StoredVia const& stored) {
   auto const& shown = leg(stored);
   DisplayVia via{.nexthop = stored.hop(),
                  .isBackup = stored.isBackup != 0,
                  .interfaceDescription = shown.description,
                  .egressVrf = shown.egressVrf,
                  .forwardingAction = stored.forwardingAction,
                  .ipTunnel = shown.ipTunnel.get(),
                  .target = target(stored)};
   if (!via.leadsTo<FallbackTarget>() && !via.leadsTo<GroupTarget>()) {
      via.vxlan = vxlan(record, stored);
   }
   if (via.vxlan != nullptr && via.leadsTo<TunnelTarget>()) {
      via.target = LinkTarget();
   }
   if (!stored.isForwardingVrfAction()) {
      via.interface = shown.text;
   }
   // A via over VXLAN goes to its VTEP, not to its own link.
   via.isConnected = via.vxlan == nullptr && isOnLink(via.nexthop, intfId(stored));
   if (stored.label <= Lumen::MplsLabel::maxLabel) {
      via.label = Lumen::MplsLabel(stored.label);
   }
   if (auto const& weight = store_->arena().weight(stored); !weight.empty()) {
      via.weight = Tunnel::CliSupport::weightText(weight.bytes(), record.weightSum);
   }
   return via;
}

// A via that has an interface but no address is the box itself, except on routes that stand for the link; one that goes
// into a tunnel, a group or another FEC leads away from it. Over VXLAN the next hop is enough, where there is one.
HostVia FecDisplay::hostVia(FecRecord const& record, StoredVia const& stored) {
   auto const shown = via(record, stored);
   bool const isVxlan = shown.vxlan != nullptr;
   if (!shown.leadsTo<LinkTarget>() || (isVxlan && shown.nexthop.isZero())) {
      return {.isLink = false};
   }
   HostVia host;
   if (isVxlan || !shown.interface.empty()) {
      host.nexthop = shown.nexthop;
      host.interface = isVxlan ? std::string_view() : shown.interface;
   }
   host.toCpu = !isVxlan && (shown.interface.empty() || (shown.nexthop.isZero() && !record.hostLink));
   return host;
}

FecDisplay::Leg const& FecDisplay::leg(StoredVia const& via) {
   if (via.leg >= legs_.size()) {
      legs_.resize(via.leg + 1U);
   }
   auto& leg = legs_[via.leg];
   if (!leg.isPrepared) [[unlikely]] {
      prepare(leg, store_->arena().leg(via));
   }
   return leg;
}

void FecDisplay::prepare(Leg& leg, ViaLeg const& of) const {
   auto const& sources = store_->sources();
   leg.isPrepared = true;
   leg.text = of.intfId.name();
   if (of.vrfId != Vrf::VrfIdMap::noVrf && of.vrfId != sources.vrfId) {
      leg.egressVrf = of.vrfName;
   }
   auto const* const config = sources.allIntfConfig ? sources.allIntfConfig->intfConfig(of.intfId) : nullptr;
   if (config != nullptr) {
      leg.description = config->description;
      if (config->tunnel && of.intfId.isNamed()) {
         leg.ipTunnel = std::make_unique<Tunnel::CliSupport::CachedIpTunnelInfo>(config->tunnel);
      }
   }
}

ViaTarget FecDisplay::target(StoredVia const& via) {
   auto const& out = intfId(via);
   if (via.isForwardingVrfAction()) {
      bool const decap = via.forwardingAction == Vault::Fib::ForwardingAction::decapForwardVrf;
      auto const vrfId = static_cast<Vrf::VrfIdMap::VrfId>(Vault::Fib::FecId(out.fecId()).id());
      return FallbackTarget{decap ? Routing::Rib::DecapActionType::ipIp : Routing::Rib::DecapActionType::none,
                            vrfName(out.isFecId() ? vrfId : Vrf::VrfIdMap::noVrf)};
   }
   if (out.isNexthopGroup()) {
      return group(out.nexthopGroupId());
   }
   if (out.fecId() != 0) {
      return FecTarget{Vault::Fib::FecId(out.fecId())};
   }
   if (out.tunnelId() != 0) {
      return tunnel(out.tunnelId());
   }
   return LinkTarget();
}

GroupTarget FecDisplay::group(Routing::NexthopGroup::NexthopGroupId id) const {
   return {id, groupName(*store_, id)};
}

TunnelTarget FecDisplay::tunnel(Tunnel::TunnelId tunnelId) {
   using Ways = TunnelResolver::Ways;
   auto const* known = tunnelsById_.find(tunnelId);
   if (known == nullptr) {
      auto made = std::make_unique<TunnelWays>();
      made->primary = tunnels_.makeCachedTunViaWithName(tunnelId, Ways::primary);
      if (tunnels_.hasBackup(tunnelId)) {
         made->backup = tunnels_.makeCachedTunViaWithName(tunnelId, Ways::backup);
      }
      if (Tunnel::tunnelType(tunnelId) == Tunnel::TunnelType::srTePolicy) {
         made->policies = policyInfoSet(store_->sources().policyStatus, tunnels_, {{.tunnelId = tunnelId}});
      }
      known = &tunnelsById_.insertOrReplace(tunnelId, std::move(made));
   }
   auto const& tunnel = **known;
   return {tunnel.primary.get(), tunnel.backup.get(), tunnel.policies ? &*tunnel.policies : nullptr};
}

FecDisplay::Policies const& FecDisplay::policies(FecRecord const& record) {
   static Policies const none;
   auto const* const extras = record.extras;
   if (extras == nullptr || (extras->policyVias.empty() && extras->cbfClasses.empty())) {
      return none;
   }
   auto const* known = policies_.find(record.fecId);
   if (known == nullptr) {
      auto const& status = store_->sources().policyStatus;
      auto made = std::make_unique<Policies>(Policies{policyInfoSet(status, tunnels_, extras->policyVias),
                                                      cbfInfoSet(status, tunnels_, extras->cbfClasses)});
      known = &policies_.insertOrReplace(record.fecId, std::move(made));
   }
   return **known;
}

DisplayFec::EvpnVia const* FecDisplay::vxlan(FecRecord const& record, StoredVia const& via) const {
   return record.extras != nullptr && !record.extras->vxlanOfVia.empty()
              ? record.extras->vxlanOfVia.find(store_->arena().cached(via))
              : nullptr;
}

}  // namespace Kiv
