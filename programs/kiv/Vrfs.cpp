#include "programs/kiv/Vrfs.h"

#include "cliprint/RendererV2.h"

#include <algorithm>
#include <utility>

namespace kiv {
namespace {

ExitStatus printText(std::vector<state::Inputs::Vrf> const& vrfs, PrepareVrf const& prepare) {
   for (auto const& vrf : vrfs) {
      if (ExitStatus const status = prepare(vrf)(); status != ExitStatus::ok) {
         return status;
      }
   }
   return ExitStatus::ok;
}

ExitStatus printJson(Session const& session, std::vector<state::Inputs::Vrf> const& vrfs, PrepareVrf const& prepare) {
   cliprint::CliPrintBuffer buffer(session.output());
   constexpr bool ownsDocument = true;
   cliprint::RendererV2 document(cliprint::modelFormat, buffer, ownsDocument);
   document._startJsonObject("vrfs");
   for (auto const& vrf : vrfs) {
      auto const print = prepare(vrf);
      document.startNestedDocument(std::string_view(vrf.name));
      if (ExitStatus const status = print(); status != ExitStatus::ok) {
         return status;
      }
   }
   document.endJsonDict();
   document.endDocument();
   document.ioflush();
   return session.ended(buffer.error());
}

}  // namespace

std::vector<state::Inputs::Vrf> vrfsInOrder(state::Inputs const& inputs) {
   auto vrfs = inputs.vrfs();
   std::ranges::sort(vrfs, {}, [](auto const& vrf) {
      return std::pair(vrf.id != Vrf::VrfIdMap::defaultVrf, std::string_view(vrf.name));
   });
   return vrfs;
}

state::Inputs::Vrf const& requestedVrf(state::Inputs const& inputs, std::string_view name) {
   state::Inputs::Vrf const* const vrf = inputs.vrf(name);
   return vrf != nullptr ? *vrf : throw Refusal(name, "no such VRF");
}

std::vector<state::Inputs::Vrf> requestedVrfs(state::Inputs const& inputs, std::string_view name) {
   return name == allVrfs ? vrfsInOrder(inputs) : std::vector{requestedVrf(inputs, name)};
}

Zam::Ptr<Interface::IntfStatus const> requestedInterface(state::Inputs const& inputs, std::string_view name) {
   auto status = inputs.intfStatus(name);
   return status != nullptr ? status : throw Refusal(name, "no such interface");
}

ExitStatus printPerVrf(Session const& session, std::vector<state::Inputs::Vrf> const& vrfs, PrepareVrf const& prepare) {
   return session.isJson() ? printJson(session, vrfs, prepare) : printText(vrfs, prepare);
}

}  // namespace kiv
