#pragma once

#include "Kiv/display/DisplayVia.h"
#include "Kiv/fecs/FecStore.h"
#include "Tunnel/CliSupport/TunnelResolver.h"

#include <deque>
#include <memory>
#include <optional>
#include <span>

namespace Kiv {

class FecDisplay;

// One FEC as a display shows it. It is as the FEC is while it is looked at.
class DisplayFec {
 public:
   using EvpnVia = Tunnel::TunnelTable::EvpnVxlanTunnelEntry;

   DisplayFec(FecDisplay& display, FecRecord const& record) noexcept : display_(&display), record_(&record) {}

   Vault::Fib::FecId fecId() const noexcept { return record_->fecId; }
   U32 number() const noexcept { return record_->number; }
   // Several of the routes that are shown use it.
   bool isShared() const noexcept { return record_->isShared; }

   // In display order.
   U32 vias() const noexcept { return record_->viaCount; }
   DisplayVia via(U32 index) const;
   HostVia hostVia(U32 index) const;
   // Vias over VXLAN that only the route cache has.
   std::span<EvpnVia const> evpnVias() const noexcept {
      return record_->extras != nullptr ? std::span<EvpnVia const>(record_->extras->evpnVias)
                                        : std::span<EvpnVia const>();
   }
   bool hasVias() const noexcept { return vias() != 0 || !evpnVias().empty(); }

   // What carries its traffic in place of vias, and by class.
   bool isSrTePolicy() const noexcept { return record_->isSrTePolicy(); }
   PolicyInfoSet const& policies() const;
   CbfInfoSet const& classes() const;

   // The first nexthop group that a via leads into; none when none does.
   std::optional<GroupTarget> nexthopGroup() const;
   // All vias do.
   bool isNexthopGroup() const;

 private:
   friend class FecDisplay;

   FecDisplay* display_;
   FecRecord const* record_;
};

// Makes FECs ready for display. What is known of an interface, a tunnel or a policy is looked up once, when the first
// via asks for it; the rest of a via is made where it is shown. One thread.
class FecDisplay {
 public:
   explicit FecDisplay(Zam::Ptr<FecStore> store);
   FecDisplay(FecDisplay const&) = delete;
   FecDisplay& operator=(FecDisplay const&) = delete;

   // None for a FEC that is not there.
   std::optional<DisplayFec> fec(Vault::Fib::FecId fecId) { return fec(find(fecId)); }
   // By what find() has told; none for null.
   std::optional<DisplayFec> fec(FecStore::Number const* number) {
      return number != nullptr ? std::optional<DisplayFec>(std::in_place, *this, store().record(*number))
                               : std::nullopt;
   }
   // In the host route table what a via shows depends on the route that showed its FEC first: whether that stands for a
   // link.
   std::optional<DisplayFec> hostFec(Vault::Fib::FecId fecId, bool isLinkRoute);

   // The number of the FEC; null when it is not there. Good until a FEC comes or goes.
   FecStore::Number const* find(Vault::Fib::FecId fecId) const { return store_->find(fecId); }
   // Ahead of find() and of fec(), step by step: asks for the memory that they will read.
   void prefetch(Vault::Fib::FecId fecId) const { store_->prefetch(fecId); }
   void prefetchRecord(FecStore::Number number) const { __builtin_prefetch(&store().record(number)); }
   void prefetchVias(FecStore::Number number) const { __builtin_prefetch(store().record(number).firstVia); }

   // The tunnel with its ways, whether it is set up or not.
   TunnelTarget tunnel(Tunnel::TunnelId tunnelId);
   // A way that a policy takes without a tunnel.
   Tunnel::CliSupport::CachedTunVia::Via way(Tunnel::CliSupport::SortedTunVia const& via) const {
      return tunnels_.way(via, {});
   }

   // "unknown" for a VRF that has none.
   std::string_view vrfName(Vrf::VrfIdMap::VrfId vrfId) const;

 private:
   friend class DisplayFec;

   // What is known of the interface.
   struct Leg {
      bool isPrepared = false;
      std::string text{};
      std::string_view description{};
      std::string_view egressVrf{};
      std::unique_ptr<Tunnel::CliSupport::CachedIpTunnelInfo> ipTunnel{};
   };
   struct TunnelWays {
      Zam::Ptr<Tunnel::CliSupport::CachedTunVia const> primary{};
      Zam::Ptr<Tunnel::CliSupport::CachedTunVia const> backup{};
      std::optional<PolicyInfoSet> policies{};
   };
   struct Policies {
      PolicyInfoSet policies;
      CbfInfoSet classes;
   };

   FecStore const& store() const noexcept { return *store_; }
   DisplayVia via(FecRecord const& record, StoredVia const& stored);
   HostVia hostVia(FecRecord const& record, StoredVia const& stored);
   Leg const& leg(StoredVia const& via);
   void prepare(Leg& leg, ViaLeg const& of) const;
   ViaTarget target(StoredVia const& via);
   GroupTarget group(Routing::NexthopGroup::NexthopGroupId id) const;
   Policies const& policies(FecRecord const& record);
   DisplayFec::EvpnVia const* vxlan(FecRecord const& record, StoredVia const& via) const;
   Lumen::IntfId const& intfId(StoredVia const& via) const noexcept { return store_->arena().leg(via).intfId; }

   Zam::Ptr<FecStore> store_;
   Tunnel::CliSupport::TunnelResolver tunnels_;
   std::deque<Leg> legs_;
   Zam::HashMap<Tunnel::TunnelId, std::unique_ptr<TunnelWays>> tunnelsById_;
   Zam::HashMap<Vault::Fib::FecId, std::unique_ptr<Policies>> policies_;
};

inline DisplayVia DisplayFec::via(U32 index) const {
   return display_->via(*record_, record_->firstVia[index]);
}

inline HostVia DisplayFec::hostVia(U32 index) const {
   return display_->hostVia(*record_, record_->firstVia[index]);
}

}  // namespace Kiv
