#pragma once

#include "Zam/Export.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

namespace Kiv {

// Turns the model's word for an IPv4 route type back into the code of the route table.
class KIV_EXPORT ProtocolCodeWordHelper final : public Zam::PtrInterface {
 public:
   std::string_view fwkType() const noexcept override { return "Kiv::ProtocolCodeWordHelper"; }

   // The code of the first route type, in ascending order, whose word the given one begins with; so "OSPFv3" is "O".
   // A word of no route type fails an assertion.
   static Zam::String protocolCodeWordToCode(Zam::String const& word);
};

KIV_EXPORT Zam::Ptr<ProtocolCodeWordHelper> protocolCodeWordHelperFactory();

}  // namespace Kiv
