#include "programs/kiv/VrfOutput.h"

#include "cliprint/RendererV2.h"

#include <unistd.h>

namespace kiv {
namespace {

ExitStatus printText(std::vector<state::Inputs::Vrf> const& vrfs, PrintVrf const& print) {
   for (auto const& vrf : vrfs) {
      if (ExitStatus const status = print(vrf, cliprint::textFormat); status != ExitStatus::ok) {
         return status;
      }
   }
   return ExitStatus::ok;
}

ExitStatus printJson(std::vector<state::Inputs::Vrf> const& vrfs, PrintVrf const& print) {
   cliprint::CliPrintBuffer buffer(STDOUT_FILENO);
   constexpr bool ownsDocument = true;
   cliprint::RendererV2 document(cliprint::modelFormat, buffer, ownsDocument);
   document._startJsonObject("vrfs");
   for (auto const& vrf : vrfs) {
      document.startNestedDocument(std::string_view(vrf.name));
      if (ExitStatus const status = print(vrf, cliprint::modelFormat); status != ExitStatus::ok) {
         return status;
      }
   }
   document.endJsonDict();
   document.endDocument();
   document.ioflush();
   return buffer.error() == 0 ? ExitStatus::ok : outputFailed(buffer.error());
}

}  // namespace

ExitStatus printPerVrf(bool json, std::vector<state::Inputs::Vrf> const& vrfs, PrintVrf const& print) {
   return json ? printJson(vrfs, print) : printText(vrfs, print);
}

}  // namespace kiv
