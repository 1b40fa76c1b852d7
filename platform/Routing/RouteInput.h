#pragma once

#include "Routing/RouteList.h"

namespace Routing {

// The static routes that one source, such as the configuration or an agent, puts into the RIB. Written by that source.
class KIV_EXPORT RouteInput final : public Zam::PtrInterface {
 public:
   explicit RouteInput(Zam::Ptr<RouteList const> routeList) : routeList_(std::move(routeList)) {}
   std::string_view fwkType() const noexcept override { return "Routing::RouteInput"; }

   RouteList::Routes const& route() const noexcept { return routeList_->route(); }

 private:
   Zam::Ptr<RouteList const> routeList_;
};

}  // namespace Routing
