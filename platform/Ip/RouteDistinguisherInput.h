#pragma once

#include "L3/VrfName.h"
#include "Lumen/RouteDistinguisher.h"
#include "Zam/Export.h"
#include "Zam/HashMap.h"
#include "Zam/Ptr.h"

namespace Ip {

// The route distinguishers of VRFs, as one source knows them. Written by that source.
class KIV_EXPORT RouteDistinguisherInput final : public Zam::PtrInterface {
 public:
   using RouteDistinguishers = Zam::HashMap<L3::VrfName, Lumen::RouteDistinguisher>;

   std::string_view fwkType() const noexcept override { return "Ip::RouteDistinguisherInput"; }

   RouteDistinguishers const& routeDistinguisher() const noexcept { return routeDistinguisher_; }
   void routeDistinguisherIs(L3::VrfName vrfName, Lumen::RouteDistinguisher routeDistinguisher) {
      routeDistinguisher_.insertOrReplace(std::move(vrfName), routeDistinguisher);
   }
   void routeDistinguisherDel(L3::VrfName const& vrfName) { routeDistinguisher_.erase(vrfName); }

 private:
   RouteDistinguishers routeDistinguisher_;
};

}  // namespace Ip
