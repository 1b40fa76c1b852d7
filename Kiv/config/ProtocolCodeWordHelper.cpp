#include "Kiv/config/ProtocolCodeWordHelper.h"

#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/common/Trace.h"
#include "Zam/Error.h"

namespace Kiv {

Zam::String ProtocolCodeWordHelper::protocolCodeWordToCode(Zam::String const& word) {
   for (U8 type = 0; type <= maxRouteType; ++type) {
      auto const* const strings = routeTypeStringsFind(static_cast<Routing::Fib::RouteType>(type));
      std::string_view const modelWord = strings != nullptr ? strings->modelWord : "";
      if (!modelWord.empty() && std::string_view(word).starts_with(modelWord)) {
         return strings->code;
      }
   }
   Zam::assertionFailed("0 && \"Invalid string\"", traceSource,
                        "Zam::String ProtocolCodeWordHelper::protocolCodeWordToCode(Zam::String)");
}

Zam::Ptr<ProtocolCodeWordHelper> protocolCodeWordHelperFactory() {
   return Zam::makePtr<ProtocolCodeWordHelper>();
}

}  // namespace Kiv
