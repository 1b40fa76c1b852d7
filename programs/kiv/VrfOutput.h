#pragma once

#include "cliprint/Renderer.h"
#include "programs/kiv/ExitStatus.h"
#include "programs/kiv/Output.h"
#include "state/Inputs.h"

#include <functional>
#include <vector>

// Commands whose output is one part per VRF: as text one part after the other, as JSON one document with the document
// of each VRF under its name, whether it is one VRF or several.
namespace kiv {

using PrintVrf = std::function<ExitStatus(state::Inputs::Vrf const& vrf, cliprint::OutputFormat format)>;

// Ends with the first VRF whose part is not ok.
ExitStatus printPerVrf(bool json, std::vector<state::Inputs::Vrf> const& vrfs, PrintVrf const& print);

// Tells of damage that a display met in a table and went around.
template <class Table>
ExitStatus checkedTable(Table const& table, ExitStatus status) {
   if (!table || table->corruptions() == 0) {
      return status;
   }
   report(table->corruption());
   return status == ExitStatus::ok ? ExitStatus::internal : status;
}

}  // namespace kiv
