#include "Zam/Value.h"

namespace Zam {

void parsedTypeWithCollection(std::string_view typeName) noexcept {
   auto const nameAt = typeName.rfind("::");
   std::string message = "\"No String constructor for ";
   message += nameAt == std::string_view::npos ? typeName : typeName.substr(nameAt + 2);
   message += " - has collection\" == nullptr";
   // The unit that registers a namespace's types.
   std::string const source = std::string(typeName.substr(0, typeName.find("::"))) + "/CliSupport";
   assertionFailed(message.c_str(), source.c_str(), "");
}

}  // namespace Zam
