#include "Kiv/selection/RouteFilter.h"

#include <algorithm>
#include <ostream>

namespace Kiv {

namespace {

template <class... Parts>
void traceFilter(Parts const&... parts) {
   constexpr U8 level = 9;
   trace(level, "filter", parts...);
}

// The status entity's text in a trace, made only when the trace is on.
struct IntfStatusText {
   Interface::IntfStatus const& status;
   friend std::ostream& operator<<(std::ostream& out, IntfStatusText const& text) {
      return out << text.status.fwkType() << '(' << text.status.intfId() << ')';
   }
};

// Whether no via matches. The walk goes over all vias even after a match, as the others may have to go.
template <class Matches, class Deleted>
bool hides(Zam::Ptr<CachedFec> const& fec, bool discardNonMatchingVia, Matches const& matches, Deleted const& deleted) {
   if (!fec) {
      return true;
   }
   bool hidden = true;
   auto const keeps = [&](StoredVia const& via) {
      bool const match = matches(via);
      hidden = hidden && !match;
      return match || !discardNonMatchingVia;
   };
   fec->keep(keeps, deleted);
   return hidden;
}

}  // namespace

RouteFilterBase::~RouteFilterBase() = default;
RouteFilterIp::~RouteFilterIp() = default;
RouteFilterIntf::~RouteFilterIntf() = default;
RouteFilterNextHopGroup::~RouteFilterNextHopGroup() = default;
RouteFilterColl::~RouteFilterColl() = default;

// The traces of a match say that there was none; those who search traces know them so.

bool RouteFilterIp::filter(Zam::Ptr<CachedFec> const& fec, bool discardNonMatchingVia) const {
   auto const matches = [this](StoredVia const& via) { return via.hop() == filteringIp_; };
   auto const deleted = [&](StoredVia const& via) {
      traceFilter("Deleting hop: ", via.hop(), " from fecId: ", fec->fecId().value(),
                  " filtering hop is: ", filteringIp_);
   };
   if (hides(fec, discardNonMatchingVia, matches, deleted)) {
      return true;
   }
   traceFilter("show ip route nexthop ", filteringIp_, " did not match the route with fecId: ", fec->fecId().value());
   return false;
}

bool RouteFilterIntf::filter(Zam::Ptr<CachedFec> const& fec, bool discardNonMatchingVia) const {
   if (!filteringIntfStatus_) {
      traceFilter("show ip route interface: given interface status is NULL");
      return true;
   }
   auto const& intfId = filteringIntfStatus_->intfId();
   auto const matches = [&](StoredVia const& via) { return fec->intfId(via) == intfId; };
   auto const deleted = [&](StoredVia const& via) {
      traceFilter("Deleting hop: ", via.hop(), " from fecId: ", fec->fecId().value(),
                  " filtering interface is: ", IntfStatusText{*filteringIntfStatus_});
   };
   if (hides(fec, discardNonMatchingVia, matches, deleted)) {
      return true;
   }
   traceFilter("show ip route interface ", intfId, " did not match the route with fecId: ", fec->fecId().value());
   return false;
}

bool RouteFilterNextHopGroup::matches(Lumen::IntfId const& intfId) const noexcept {
   return intfId.isNexthopGroup() && (filterAll_ || intfId.nexthopGroupId() == filteringNextHopGroupId_);
}

bool RouteFilterNextHopGroup::filter(Zam::Ptr<CachedFec> const& fec, bool /* discardNonMatchingVia */) const {
   auto const leads = [&](StoredVia const& via) { return matches(fec->intfId(via)); };
   if (!fec || std::ranges::none_of(fec->record().vias(), leads)) {
      return true;
   }
   traceFilter("show ip route nexthop group do not filter");
   return false;
}

void RouteFilterColl::filterCollIs(Zam::Ptr<RouteFilterBase const> const& filter) {
   Zam::assertThat(filter != nullptr, "filter", traceSource, "filterCollIs");
   filterColl_.insert(filter);
}

bool RouteFilterColl::filter(Zam::Ptr<CachedFec> const& fec) const {
   for (auto member = filterCollIteratorConst(); member; ++member) {
      if (member->filter(fec, discardNonMatchingVia_)) {
         return true;
      }
   }
   return false;
}

Zam::Ptr<RouteFilterIp> routeFilterIpFactory(Lumen::IpGenAddr const& filteringIp) {
   return Zam::makePtr<RouteFilterIp>(filteringIp);
}

Zam::Ptr<RouteFilterIntf> routeFilterIntfFactory(Zam::Ptr<Interface::IntfStatus const> const& filteringIntfStatus) {
   return Zam::makePtr<RouteFilterIntf>(filteringIntfStatus);
}

Zam::Ptr<RouteFilterNextHopGroup> routeFilterNextHopGroupFactory(
    Routing::NexthopGroup::NexthopGroupId filteringNextHopGroupId, bool filterAll) {
   return Zam::makePtr<RouteFilterNextHopGroup>(filteringNextHopGroupId, filterAll);
}

Zam::Ptr<RouteFilterColl> routeFilterCollFactory(bool discardNonMatchingVia) {
   return Zam::makePtr<RouteFilterColl>(discardNonMatchingVia);
}

}  // namespace Kiv
