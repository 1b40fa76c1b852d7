#pragma once

#include "Routing/RouteKey.h"
#include "Routing/RouteType.h"
#include "Routing/Via.h"
#include "Zam/Export.h"
#include "Zam/FlatMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

#include <set>

namespace Routing {

// One configured static route. It belongs to the RouteList that made it; key and route type are fixed for its life.
// A forward route has vias; the drop and nexthop-group attributes mean something on routes of those types only.
//
// Nearly every route has a single via, so what is kept per via is in sorted arrays: a hash map of one via is eight
// slots.
class KIV_EXPORT Route final : public Zam::PtrInterface {
 public:
   using Vias = Zam::FlatMap<Via, RouteMetric>;
   using ViaNames = Zam::FlatMap<Via, Zam::String>;

   Route(RouteKey const& key, RouteType routeType) noexcept : key_(key), routeType_(routeType) {}
   std::string_view fwkType() const noexcept override { return "Routing::Route"; }

   RouteKey const& key() const noexcept { return key_; }
   RouteType routeType() const noexcept { return routeType_; }

   U32 tag() const noexcept { return tag_; }
   void tagIs(U32 tag) noexcept { tag_ = tag; }
   // Installed at run time rather than configured: never saved, gone after a restart.
   bool nonPersistent() const noexcept { return nonPersistent_; }
   void nonPersistentIs(bool nonPersistent) noexcept { nonPersistent_ = nonPersistent; }
   bool ribBypass() const noexcept { return ribBypass_; }
   void ribBypassIs(bool ribBypass) noexcept { ribBypass_ = ribBypass; }
   // The default VRF's name when the route is not leaked.
   L3::VrfName const& leakToVrf() const noexcept { return leakToVrf_; }
   void leakToVrfIs(L3::VrfName vrfName) { leakToVrf_ = std::move(vrfName); }
   Zam::String const& dropNextHopName() const noexcept { return dropNextHopName_; }
   void dropNextHopNameIs(Zam::String name) { dropNextHopName_ = std::move(name); }
   Zam::String const& nexthopGroupName() const noexcept { return nexthopGroupName_; }
   void nexthopGroupNameIs(Zam::String name) { nexthopGroupName_ = std::move(name); }
   RouteMetric nexthopGroupMetric() const noexcept { return nexthopGroupMetric_; }
   void nexthopGroupMetricIs(RouteMetric metric) noexcept { nexthopGroupMetric_ = metric; }

   // The vias with the metric of each.
   Vias const& via() const noexcept { return via_; }
   void viaIs(Via const& via, RouteMetric metric) { via_.insertOrReplace(via, metric); }
   void viaDel(Via const& via) { via_.erase(via); }
   // Configured names; they outlive the deletion of their via. An empty name is none.
   ViaNames const& viaNextHopName() const noexcept { return viaNextHopName_; }
   void viaNextHopNameIs(Via const& via, Zam::String name) {
      if (name.empty()) {
         viaNextHopName_.erase(via);
      } else {
         viaNextHopName_.insertOrReplace(via, std::move(name));
      }
   }
   void viaNextHopNameDel(Via const& via) { viaNextHopName_.erase(via); }
   // The vias whose reachability BFD tracks.
   std::set<Via> const& bfdTracked() const noexcept { return bfdTracked_; }
   void bfdTrackedIs(Via const& via) { bfdTracked_.insert(via); }
   void bfdTrackedDel(Via const& via) { bfdTracked_.erase(via); }

 private:
   RouteKey key_;
   RouteType routeType_;
   bool nonPersistent_ = false;
   bool ribBypass_ = false;
   U32 tag_ = 0;
   RouteMetric nexthopGroupMetric_ = 0;
   L3::VrfName leakToVrf_;
   Zam::String dropNextHopName_;
   Zam::String nexthopGroupName_;
   Vias via_;
   ViaNames viaNextHopName_;
   std::set<Via> bfdTracked_;
};

}  // namespace Routing
