#include "Kiv/CliRdAssignmentChecker.h"

#include "Kiv/common/Trace.h"
#include "Zam/Error.h"

#include <utility>

namespace Kiv {

RdAssignmentChecker::RdAssignmentChecker(Zam::Ptr<InputDir const> autoDir, Zam::Ptr<InputDir const> configDir,
                                         Zam::String vrf, Lumen::RouteDistinguisher rd)
    : RdAssignmentChecker({}, std::move(autoDir), std::move(configDir), std::move(vrf), rd, true, {}) {
   handleInitialized();
}

RdAssignmentChecker::RdAssignmentChecker(Zam::ValueType tag, Zam::Ptr<InputDir const> autoDir,
                                         Zam::Ptr<InputDir const> configDir, Zam::String vrf,
                                         Lumen::RouteDistinguisher rd, bool isAcceptable, Zam::String message)
    : Zam::ValueType(tag),
      rdAutoInputDir(std::move(autoDir)),
      rdConfigInputDir(std::move(configDir)),
      vrfName(std::move(vrf)),
      routeDistinguisher(rd),
      acceptable(isAcceptable),
      errorMessage(std::move(message)) {}

void RdAssignmentChecker::handleInitialized() {
   handleInputDir(rdConfigInputDir);
   if (acceptable) {
      handleInputDir(rdAutoInputDir);
   }
}

void RdAssignmentChecker::handleInputDir(Zam::Ptr<InputDir const> const& dir) {
   if (!dir) {
      return;
   }
   for (auto const& [name, entity] : *dir) {
      auto const input = Zam::ptrCast<Ip::RouteDistinguisherInput const>(entity);
      Zam::assertThat(input.get() != nullptr, "__null != routeDistinguisherInput", traceSource,
                      "void RdAssignmentChecker::handleInputDir()");
      for (auto const& [vrf, rd] : input->routeDistinguisher()) {
         if (rd == routeDistinguisher && std::string_view(vrf) != std::string_view(vrfName)) {
            acceptable = false;
            errorMessage = "RD " + rd.stringValue() + " already in use by VRF " + vrf.bytes();
            return;
         }
      }
   }
}

}  // namespace Kiv
