#include "programs/kiv/ShowRoute.h"

#include "Kiv/CliSupport.h"
#include "Zam/TypeRegistry.h"
#include "cliprint/RendererV2.h"
#include "programs/kiv/Output.h"
#include "programs/kiv/SorterArguments.h"
#include "programs/kiv/Source.h"

#include <unistd.h>

#include <stdexcept>

namespace kiv {
namespace {

// What differs between the families' commands.
struct Family {
   char const* sorterType;
   std::vector<std::any> (*arguments)(state::Inputs&, state::Inputs::Vrf const&, RouteQuery const&);
};
constexpr Family ip4{"Kiv::RouteSorter", sorterArguments};
constexpr Family ip6{"Kiv::Route6Sorter", sorter6Arguments};

std::vector<state::Inputs::Vrf> requestedVrfs(state::Inputs const& inputs, Request const& request) {
   std::string const name = request.value("vrf").value_or(std::string(L3::VrfName::defaultVrf));
   state::Inputs::Vrf const* const vrf = inputs.vrf(name);
   if (vrf == nullptr) {
      throw std::runtime_error('"' + name + "\": " + std::string(request.command.words) + ": no such VRF");
   }
   return {*vrf};
}

// Selects and prints the routes of one VRF; the output of a command is complete when this is ok.
ExitStatus printVrf(Family const& family, state::Inputs& inputs, state::Inputs::Vrf const& vrf,
                    cliprint::OutputFormat format) {
   auto const* const type = Zam::TypeRegistry::instance().type(family.sorterType);
   std::any sorter = type->construct(family.arguments(inputs, vrf, {}));
   constexpr bool vrfHeader = true;
   std::any const complete =
       type->call(sorter, "printRoutes", std::vector<std::any>{U32{STDOUT_FILENO}, format, vrfHeader});
   if (std::any_cast<bool>(complete)) {
      return ExitStatus::ok;
   }
   S32 const error = std::any_cast<S32>(type->attribute(sorter, "outputError"));
   return error == 0 ? ExitStatus::interrupted : outputFailed(error);
}

ExitStatus printText(Family const& family, state::Inputs& inputs, std::vector<state::Inputs::Vrf> const& vrfs) {
   for (auto const& vrf : vrfs) {
      if (ExitStatus const status = printVrf(family, inputs, vrf, cliprint::textFormat); status != ExitStatus::ok) {
         return status;
      }
   }
   return ExitStatus::ok;
}

// One document, with the document of each VRF under its name.
ExitStatus printJson(Family const& family, state::Inputs& inputs, std::vector<state::Inputs::Vrf> const& vrfs) {
   cliprint::CliPrintBuffer buffer(STDOUT_FILENO);
   constexpr bool ownsDocument = true;
   cliprint::RendererV2 document(cliprint::modelFormat, buffer, ownsDocument);
   document._startJsonObject("vrfs");
   for (auto const& vrf : vrfs) {
      document.startNestedDocument(std::string_view(vrf.name));
      if (ExitStatus const status = printVrf(family, inputs, vrf, cliprint::modelFormat); status != ExitStatus::ok) {
         return status;
      }
   }
   document.endJsonDict();
   document.endDocument();
   document.ioflush();
   return buffer.error() == 0 ? ExitStatus::ok : outputFailed(buffer.error());
}

// Tells of damage that the display met and went around.
template <class Table>
ExitStatus checked(Table const& table, ExitStatus status) {
   if (!table || table->corruptions() == 0) {
      return status;
   }
   report(table->corruption());
   return status == ExitStatus::ok ? ExitStatus::internal : status;
}

ExitStatus checkedTables(state::Inputs const& inputs, ExitStatus status) {
   status = checked(inputs.forwardingStatus, status);
   status = checked(inputs.forwarding6Status, status);
   status = checked(inputs.forwardingGenStatus, status);
   status = checked(inputs.unprogrammedRouteStatus, status);
   return checked(inputs.kernelUnprogrammedRoute, status);
}

ExitStatus showRoute(Family const& family, Request const& request) {
   Kiv::registerTypes();
   state::Inputs inputs = inputsFrom(request.options.source);
   auto const vrfs = requestedVrfs(inputs, request);
   ExitStatus status = request.options.json ? printJson(family, inputs, vrfs) : printText(family, inputs, vrfs);
   for (auto const& vrf : vrfs) {
      status = checked(inputs.routes(vrf.id), status);
      status = checked(inputs.routes6(vrf.id), status);
   }
   return checkedTables(inputs, status);
}

}  // namespace

ExitStatus showIpRoute(Request const& request) {
   return showRoute(ip4, request);
}

ExitStatus showIpv6Route(Request const& request) {
   return showRoute(ip6, request);
}

}  // namespace kiv
