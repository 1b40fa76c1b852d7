#pragma once

#include "Kiv/routedisplay/CachedFec.h"
#include "Zam/Export.h"
#include "Zam/Ptr.h"

#include <unordered_set>

namespace Kiv {

// One restriction on the routes to show, asked about each candidate's FEC.
class KIV_EXPORT RouteFilterBase : public Zam::PtrInterface {
 public:
   ~RouteFilterBase() override;
   // True hides the route. With discardNonMatchingVia the filter also removes the vias that do not match from the FEC,
   // for every route that shares it.
   virtual bool filter(Zam::Ptr<CachedFec> const& fec, bool discardNonMatchingVia) const = 0;
};

// The restrictions of one command: a route is shown only when every one of them passes it.
class KIV_EXPORT RouteFilterColl final : public Zam::PtrInterface {
 public:
   explicit RouteFilterColl(bool discardNonMatchingVia) noexcept : discardNonMatchingVia_(discardNonMatchingVia) {}
   ~RouteFilterColl() override;
   std::string_view fwkType() const noexcept override { return "Kiv::RouteFilterColl"; }

   bool discardNonMatchingVia() const noexcept { return discardNonMatchingVia_; }
   bool filterAll() const noexcept { return filterAll_; }
   void filterAllIs(bool filterAll) noexcept { filterAll_ = filterAll; }

   // Adding a filter that is there changes nothing; deleting tells whether it was.
   void filterCollIs(Zam::Ptr<RouteFilterBase const> const& filter) { filterColl_.insert(filter); }
   bool filterCollDel(Zam::Ptr<RouteFilterBase const> const& filter) { return filterColl_.erase(filter) != 0; }
   void filterCollDelAll() noexcept { filterColl_.clear(); }
   bool empty() const noexcept { return filterColl_.empty(); }

   // True hides the route. Filters after one that hides are not run, so they prune nothing.
   bool filter(Zam::Ptr<CachedFec> const& fec) const;

 private:
   bool discardNonMatchingVia_;
   bool filterAll_ = false;
   std::unordered_set<Zam::Ptr<RouteFilterBase const>> filterColl_;
};

KIV_EXPORT Zam::Ptr<RouteFilterColl> routeFilterCollFactory(bool discardNonMatchingVia);

}  // namespace Kiv
