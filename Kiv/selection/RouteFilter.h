#pragma once

#include "Interface/IntfStatus.h"
#include "Kiv/common/Trace.h"
#include "Kiv/fecs/CachedFec.h"
#include "Lumen/IpGenAddr.h"
#include "Routing/NexthopGroup/NexthopGroupId.h"
#include "Zam/Error.h"
#include "Zam/Export.h"
#include "Zam/Ptr.h"

#include <unordered_set>
#include <utility>

// Restrictions of one command on the routes to show: a handler makes the filters, puts them into a collection and gives
// that to the sorter. Filters never change and keep nothing between calls. What they remove from a FEC is gone for
// every route of the command that shares it.
namespace Kiv {

// One restriction, asked about each candidate's FEC. A null FEC, which is not in the cache, has no vias.
class KIV_EXPORT RouteFilterBase : public Zam::PtrInterface {
 public:
   ~RouteFilterBase() override;
   // True hides the route. With discardNonMatchingVia the filter also removes the vias that do not match from the FEC.
   virtual bool filter(Zam::Ptr<CachedFec> const& fec, bool discardNonMatchingVia) const = 0;
};

// Routes with a via to this next hop, of the same address family.
class KIV_EXPORT RouteFilterIp final : public RouteFilterBase {
 public:
   explicit RouteFilterIp(Lumen::IpGenAddr const& filteringIp) noexcept : filteringIp_(filteringIp) {}
   ~RouteFilterIp() override;
   std::string_view fwkType() const noexcept override { return "Kiv::RouteFilterIp"; }
   bool filter(Zam::Ptr<CachedFec> const& fec, bool discardNonMatchingVia) const override;

   Lumen::IpGenAddr const& filteringIp() const noexcept { return filteringIp_; }

 private:
   Lumen::IpGenAddr filteringIp_;
};

// Routes with a via out of this interface. A null status, of an interface that is not there, hides every route.
class KIV_EXPORT RouteFilterIntf final : public RouteFilterBase {
 public:
   explicit RouteFilterIntf(Zam::Ptr<Interface::IntfStatus const> filteringIntfStatus) noexcept
       : filteringIntfStatus_(std::move(filteringIntfStatus)) {}
   ~RouteFilterIntf() override;
   std::string_view fwkType() const noexcept override { return "Kiv::RouteFilterIntf"; }
   bool filter(Zam::Ptr<CachedFec> const& fec, bool discardNonMatchingVia) const override;

   Zam::Ptr<Interface::IntfStatus const> const& filteringIntfStatus() const noexcept { return filteringIntfStatus_; }

 private:
   Zam::Ptr<Interface::IntfStatus const> filteringIntfStatus_;
};

// Routes with a via into this nexthop group, or with filterAll into any. It never removes vias.
class KIV_EXPORT RouteFilterNextHopGroup final : public RouteFilterBase {
 public:
   RouteFilterNextHopGroup(Routing::NexthopGroup::NexthopGroupId filteringNextHopGroupId, bool filterAll) noexcept
       : filteringNextHopGroupId_(filteringNextHopGroupId),
         filterAll_(filterAll) {}
   ~RouteFilterNextHopGroup() override;
   std::string_view fwkType() const noexcept override { return "Kiv::RouteFilterNextHopGroup"; }
   bool filter(Zam::Ptr<CachedFec> const& fec, bool discardNonMatchingVia) const override;

   Routing::NexthopGroup::NexthopGroupId filteringNextHopGroupId() const noexcept { return filteringNextHopGroupId_; }
   bool filterAll() const noexcept { return filterAll_; }

 private:
   bool matches(Lumen::IntfId const& intfId) const noexcept;

   Routing::NexthopGroup::NexthopGroupId filteringNextHopGroupId_;
   bool filterAll_;
};

// All restrictions of a command: a route is shown only when every one of them passes it.
class KIV_EXPORT RouteFilterColl final : public Zam::PtrInterface {
 public:
   using Filters = std::unordered_set<Zam::Ptr<RouteFilterBase const>>;

   // Walks the filters, in an order without meaning; true while there is one. The collection stays as it is meanwhile.
   class IteratorConst {
    public:
      explicit IteratorConst(Filters const& filters) noexcept : iter_(filters.begin()), end_(filters.end()) {}
      explicit operator bool() const noexcept { return iter_ != end_; }
      Zam::Ptr<RouteFilterBase const> const& operator*() const { return *checked(); }
      RouteFilterBase const* operator->() const { return checked()->get(); }
      IteratorConst& operator++() {
         iter_ = std::next(checked());
         return *this;
      }

    private:
      Filters::const_iterator checked() const {
         Zam::assertThat(iter_ != end_, "iter_", traceSource);
         return iter_;
      }

      Filters::const_iterator iter_;
      Filters::const_iterator end_;
   };

   explicit RouteFilterColl(bool discardNonMatchingVia) noexcept : discardNonMatchingVia_(discardNonMatchingVia) {}
   ~RouteFilterColl() override;
   std::string_view fwkType() const noexcept override { return "Kiv::RouteFilterColl"; }

   bool discardNonMatchingVia() const noexcept { return discardNonMatchingVia_; }
   // A note of the handler's; it does not take part in the filtering.
   bool filterAll() const noexcept { return filterAll_; }
   void filterAllIs(bool filterAll) noexcept { filterAll_ = filterAll; }

   Filters const& filterColl() const noexcept { return filterColl_; }
   IteratorConst filterCollIteratorConst() const noexcept { return IteratorConst(filterColl_); }
   bool empty() const noexcept { return filterColl_.empty(); }
   // Adding a filter that is there changes nothing; deleting tells whether it was.
   void filterCollIs(Zam::Ptr<RouteFilterBase const> const& filter);
   bool filterCollDel(Zam::Ptr<RouteFilterBase const> const& filter) { return filterColl_.erase(filter) != 0; }
   void filterCollDelAll() noexcept { filterColl_.clear(); }

   // True hides the route. Filters after one that hides are not run, so they prune nothing.
   bool filter(Zam::Ptr<CachedFec> const& fec) const;

 private:
   bool discardNonMatchingVia_;
   bool filterAll_ = false;
   Filters filterColl_;
};

KIV_EXPORT Zam::Ptr<RouteFilterIp> routeFilterIpFactory(Lumen::IpGenAddr const& filteringIp);
KIV_EXPORT Zam::Ptr<RouteFilterIntf> routeFilterIntfFactory(
    Zam::Ptr<Interface::IntfStatus const> const& filteringIntfStatus);
KIV_EXPORT Zam::Ptr<RouteFilterNextHopGroup> routeFilterNextHopGroupFactory(
    Routing::NexthopGroup::NexthopGroupId filteringNextHopGroupId, bool filterAll);
KIV_EXPORT Zam::Ptr<RouteFilterColl> routeFilterCollFactory(bool discardNonMatchingVia);

// The factories under the names by which the type runtime creates.
inline constexpr auto* RouteFilterIpIs = &routeFilterIpFactory;
inline constexpr auto* RouteFilterIntfIs = &routeFilterIntfFactory;
inline constexpr auto* RouteFilterNextHopGroupIs = &routeFilterNextHopGroupFactory;
inline constexpr auto* RouteFilterCollIs = &routeFilterCollFactory;

}  // namespace Kiv
