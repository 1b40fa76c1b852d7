#include "Kiv/display/Types.h"

#include "Kiv/display/FecDisplay.h"
#include "Kiv/fecs/CachedFec.h"
#include "Zam/TypeRegistry.h"

#include <algorithm>
#include <set>
#include <string>

namespace Kiv {

namespace {

using Tunnel::CliSupport::CachedIpTunnelInfo;
using Tunnel::CliSupport::CachedTunVia;

template <class T>
std::optional<T> some(bool has, T value) {
   return has ? std::optional<T>(std::move(value)) : std::nullopt;
}

// The columns as scripts know them, by position in display order.
struct Columns {
   using Text = std::optional<Zam::String>;

   static std::optional<DisplayVia> viaAt(CachedFec const& fec, FecDisplay& display, U32 at) {
      return at < fec.vias() ? std::optional(DisplayFec(display, fec.record()).via(at)) : std::nullopt;
   }
   static Text viaTypeString(CachedFec const& fec, FecDisplay& /* display */, U32 at) {
      return some<Zam::String>(at < fec.vias() && fec.at(at).isBackup != 0, "backup");
   }
   // The unspecified address of the routes' family for a via whose destination is on the link.
   static Text nexthopAddr(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      if (via && via->isConnected) {
         bool const isIpv4 = fec.store()->sources().family == Lumen::AddressFamily::ipv4;
         return isIpv4 ? Lumen::IpAddr().stringValue() : Lumen::Ip6Addr().stringValue();
      }
      return some<Zam::String>(via.has_value(), via && !via->nexthop.isZero() ? via->nexthop.stringValue() : "");
   }
   static Text interface(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      return some<Zam::String>(via.has_value(), via ? via->interface : std::string_view());
   }
   static Text interfaceDescription(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      return some<Zam::String>(via && !via->interfaceDescription.empty(),
                               via ? via->interfaceDescription : std::string_view());
   }
   // Of vias that leave through another VRF, as its name.
   static std::optional<U32> vrfId(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      return some<U32>(via && !via->egressVrf.empty(), via ? fec.store()->arena().leg(fec.at(at)).vrfId : 0);
   }
   static std::optional<L3::VrfName> vrfName(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      return via && !via->egressVrf.empty() ? std::optional<L3::VrfName>(via->egressVrf) : std::nullopt;
   }
   static std::optional<Lumen::MplsLabel> label(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      return via && via->label.isLabel() ? std::optional(via->label) : std::nullopt;
   }
   static std::optional<Lumen::MplsLabelOperation> viaLabelStack(CachedFec const& fec, FecDisplay& display, U32 at) {
      using Operation = Lumen::MplsLabelOperation;
      return some(label(fec, display, at).has_value(), Operation(Operation::Operation::push, {}));
   }
   static std::optional<CachedNhgVia> nhgVia(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      auto const* const group = via ? via->leadsTo<GroupTarget>() : nullptr;
      return group != nullptr ? std::optional<CachedNhgVia>({{}, group->id, group->name}) : std::nullopt;
   }
   static Text nhgName(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const group = nhgVia(fec, display, at);
      return group ? Text(group->nhgName) : std::nullopt;
   }
   static std::optional<CachedFallbackVia> fallbackVia(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      auto const* const fallback = via ? via->leadsTo<FallbackTarget>() : nullptr;
      return fallback != nullptr ? std::optional<CachedFallbackVia>({{}, fallback->decapType, fallback->vrfName})
                                 : std::nullopt;
   }
   using Tunnels = std::optional<Zam::Ptr<CachedTunVia const>>;
   static Tunnels tunVia(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      auto const* const tunnel = via ? via->leadsTo<TunnelTarget>() : nullptr;
      return tunnel != nullptr ? Tunnels(tunnel->primary) : std::nullopt;
   }
   static Tunnels tunViaBackupVia(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      auto const* const tunnel = via ? via->leadsTo<TunnelTarget>() : nullptr;
      return tunnel != nullptr && tunnel->backup != nullptr ? Tunnels(tunnel->backup) : std::nullopt;
   }
   static std::optional<PolicyInfoSet> tunViaPolicyInfoSet(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      auto const* const tunnel = via ? via->leadsTo<TunnelTarget>() : nullptr;
      if (tunnel == nullptr || tunnel->policies == nullptr) {
         return std::nullopt;
      }
      auto policies = *tunnel->policies;
      policies.policyInfo.find(0)->viaLabel = via->label;
      return policies;
   }
   static std::optional<CachedIpTunnelInfo> ipEncapTunInfo(CachedFec const& fec, FecDisplay& display, U32 at) {
      auto const via = viaAt(fec, display, at);
      return via && via->ipTunnel != nullptr ? std::optional(*via->ipTunnel) : std::nullopt;
   }

   // By position in the FEC's own table.
   static StoredVia const* atTable(CachedFec const& fec, U32 position) {
      auto const vias = fec.record().vias();
      auto const found = std::ranges::find(vias, position, &StoredVia::position);
      return found != vias.end() ? &*found : nullptr;
   }
   static std::optional<Vault::Fib::ForwardingAction> viaForwardingAction(CachedFec const& fec, FecDisplay& /* d */,
                                                                          U32 position) {
      auto const* const via = atTable(fec, position);
      return via != nullptr ? std::optional(via->forwardingAction) : std::nullopt;
   }
   static Text viaWeight(CachedFec const& fec, FecDisplay& /* display */, U32 position) {
      auto const* const via = atTable(fec, position);
      return via != nullptr && via->weight != 0 ? Text(fec.store()->arena().weight(*via)) : std::nullopt;
   }
};

// In the host route table: the positions of vias that lead to the box itself.
std::set<U16> hostToCpu(CachedFec const& fec) {
   std::set<U16> toCpu;
   FecDisplay display(fec.store());
   DisplayFec const shown(display, fec.record());
   bool const isPrepared = fec.preparedVias() != shown.evpnVias().size();
   for (U32 i = 0; isPrepared && i < shown.vias(); ++i) {
      if (shown.hostVia(i).toCpu) {
         toCpu.insert(static_cast<U16>(i));
      }
   }
   return toCpu;
}

// One column over the vias: by position, with gaps where a via has no such value, as the FEC is at that moment.
template <auto valueOf, class T>
void column(Zam::TypeBuilder<CachedFec>& builder, char const* name,
            std::optional<T> (* /* valueOf */)(CachedFec const&, FecDisplay&, U32)) {
   builder.view(
       name, +[](CachedFec const& fec) {
          Zam::OrderedMap<U32, T> values;
          FecDisplay display(fec.store());
          // Positions in the FEC's own table go as far, those of vias that were added or removed left out.
          U32 const end = std::max(fec.vias(), U32{fec.record().tableVias});
          for (U32 position = 0; position < end; ++position) {
             if (auto value = valueOf(fec, display, position)) {
                values.insertOrReplace(position, std::move(*value));
             }
          }
          return values;
       });
}
template <auto valueOf>
void column(Zam::TypeBuilder<CachedFec>& builder, char const* name) {
   column<valueOf>(builder, name, valueOf);
}

}  // namespace

void registerDisplayTypes() {
   auto& registry = Zam::TypeRegistry::instance();
   registry.value<PolicyInfo>();
   registry.value<PolicyInfoSet>();
   registry.value<ColoredTepInfo>();
   registry.value<CbfInfo>();
   registry.value<CbfInfoSet>();
   auto fec = registry.entity<CachedFec>("Kiv::CachedFec");
   column<&Columns::viaTypeString>(fec, "viaTypeString");
   column<&Columns::nexthopAddr>(fec, "nexthopAddr");
   column<&Columns::interface>(fec, "interface");
   column<&Columns::interfaceDescription>(fec, "interfaceDescription");
   column<&Columns::vrfId>(fec, "vrfId");
   column<&Columns::vrfName>(fec, "vrfName");
   column<&Columns::label>(fec, "label");
   column<&Columns::viaLabelStack>(fec, "viaLabelStack");
   column<&Columns::nhgVia>(fec, "nhgVia");
   column<&Columns::nhgName>(fec, "nhgName");
   column<&Columns::fallbackVia>(fec, "fallbackVia");
   column<&Columns::tunVia>(fec, "tunVia");
   column<&Columns::tunViaBackupVia>(fec, "tunViaBackupVia");
   column<&Columns::tunViaPolicyInfoSet>(fec, "tunViaPolicyInfoSet");
   column<&Columns::ipEncapTunInfo>(fec, "ipEncapTunInfo");
   column<&Columns::viaForwardingAction>(fec, "viaForwardingAction");
   column<&Columns::viaWeight>(fec, "viaWeight");
   fec.view("hostToCpu", &hostToCpu);
}

}  // namespace Kiv
