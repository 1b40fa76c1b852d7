#pragma once

#include "Ip/RouteDistinguisherInput.h"
#include "Lumen/RouteDistinguisher.h"
#include "Zam/Dir.h"
#include "Zam/Export.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"
#include "Zam/Value.h"

namespace Kiv {

// Before a VRF gets a route distinguisher: whether another VRF has it. The constructor looks, and the object carries
// the answer. Configured assignments are looked at before automatic ones, and the first conflict is the one that is
// told.
struct KIV_EXPORT RdAssignmentChecker : Zam::ValueType {
   // Of Ip::RouteDistinguisherInput; another entity in it fails an assertion. None is an empty one.
   using InputDir = Zam::Dir<Zam::PtrInterface>;

   RdAssignmentChecker() = default;
   RdAssignmentChecker(Zam::Ptr<InputDir const> autoDir, Zam::Ptr<InputDir const> configDir, Zam::String vrf,
                       Lumen::RouteDistinguisher rd);
   // All attributes, for the type runtime; looks at nothing.
   RdAssignmentChecker(Zam::ValueType tag, Zam::Ptr<InputDir const> autoDir, Zam::Ptr<InputDir const> configDir,
                       Zam::String vrf, Lumen::RouteDistinguisher rd, bool isAcceptable, Zam::String message);

   Zam::Ptr<InputDir const> rdAutoInputDir;
   Zam::Ptr<InputDir const> rdConfigInputDir;
   Zam::String vrfName;
   Lumen::RouteDistinguisher routeDistinguisher;
   bool acceptable = true;
   Zam::String errorMessage;

   static constexpr auto zamDescription() {
      return Zam::describe<RdAssignmentChecker>(
          "Kiv::RdAssignmentChecker", Zam::attribute("rdAutoInputDir", &RdAssignmentChecker::rdAutoInputDir),
          Zam::attribute("rdConfigInputDir", &RdAssignmentChecker::rdConfigInputDir),
          Zam::attribute("vrfName", &RdAssignmentChecker::vrfName),
          Zam::attribute("routeDistinguisher", &RdAssignmentChecker::routeDistinguisher),
          Zam::attribute("acceptable", &RdAssignmentChecker::acceptable),
          Zam::attribute("errorMessage", &RdAssignmentChecker::errorMessage));
   }

   void handleInitialized();
   void handleInputDir(Zam::Ptr<InputDir const> const& dir);
};

}  // namespace Kiv
