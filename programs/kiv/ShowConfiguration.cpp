#include "programs/kiv/ShowConfiguration.h"

#include "Kiv/CliSupport.h"
#include "Zam/TypeRegistry.h"
#include "programs/kiv/RouteClauses.h"
#include "programs/kiv/RouteRequest.h"
#include "programs/kiv/Source.h"
#include "programs/kiv/StaticRouteClauses.h"
#include "programs/kiv/VrfOutput.h"

#include <unistd.h>

#include <cerrno>

namespace kiv {
namespace {

struct Ip4 {
   static constexpr std::string_view routeCommand = "ip route ";
   static auto const& routeList(state::Inputs::Vrf const& vrf) { return vrf.ip.routeList; }
};

struct Ip6 {
   static constexpr std::string_view routeCommand = "ipv6 route ";
   static auto const& routeList(state::Inputs::Vrf const& vrf) { return vrf.ip6.routeList; }
};

template <class Family>
std::string savedRoutes(state::Inputs::Vrf const& vrf, bool withDefaults) {
   std::string command(Family::routeCommand);
   if (!vrf.name.isDefaultVrf()) {
      command.append("vrf ").append(vrf.name.bytes()).append(" ");
   }
   auto const& type = *Zam::TypeRegistry::instance().type("Kiv::StaticRoutesCliSaver");
   std::any saver = type.construct();
   std::any const saved = type.call(
       saver, "save",
       std::vector<std::any>{Family::routeList(vrf), withDefaults, Zam::String(command), Kiv::RoutingConsts()});
   return std::any_cast<Zam::String const&>(saved).bytes();
}

template <class Family>
ExitStatus showRunning(Request const& request) {
   Kiv::registerTypes();
   state::Inputs const inputs = inputsFrom(request.options.source);
   std::string text;
   for (auto const& vrf : vrfsInOrder(inputs)) {
      text += savedRoutes<Family>(vrf, request.has(routeClause::all));
   }
   return writeOutput(text);
}

ExitStatus dumpRoutes(state::Inputs const& inputs, Zam::Ptr<Routing::RouteList const> const& routes, U32 tag,
                      cliprint::OutputFormat format) {
   Kiv::StaticRoutesRibCommon table;
   table.allIntfConfig = inputs.allIntfConfig;
   table.fd = STDOUT_FILENO;
   table.fmt = format;
   table.tag = tag;
   table.routeInputConf.insert(Zam::makePtr<Routing::RouteInput>(routes));
   int const error = table.dump(Kiv::RoutingConsts());
   return error == 0 ? ExitStatus::ok : error == EINTR ? ExitStatus::interrupted : outputFailed(error);
}

template <class Family>
ExitStatus showStatic(Request const& request) {
   state::Inputs const inputs = inputsFrom(request.options.source);
   auto const& tag = request.value(staticClause::tag);
   auto const print = [&](state::Inputs::Vrf const& vrf, cliprint::OutputFormat format) {
      if (format == cliprint::textFormat) {
         if (ExitStatus const status = writeOutput("\nVRF: " + vrf.name.bytes() + "\n"); status != ExitStatus::ok) {
            return status;
         }
      }
      return dumpRoutes(inputs, Family::routeList(vrf), tag ? checkedNumber(*tag) : 0, format);
   };
   return printPerVrf(request.options.json, requestedVrfs(inputs, request), print);
}

}  // namespace

ExitStatus showRunningIpRoutes(Request const& request) {
   return showRunning<Ip4>(request);
}

ExitStatus showRunningIpv6Routes(Request const& request) {
   return showRunning<Ip6>(request);
}

ExitStatus showIpStaticRoutes(Request const& request) {
   return showStatic<Ip4>(request);
}

ExitStatus showIpv6StaticRoutes(Request const& request) {
   return showStatic<Ip6>(request);
}

}  // namespace kiv
