#include "programs/follow/ChangeText.h"

namespace follow {

namespace {

std::string viaText(Vault::Fib::Via const& via) {
   std::string text = "{\"interface\":" + state::jsonQuoted(via.intfId.stringValue());
   if (!via.hop.isEmpty()) {
      text += ",\"nexthop\":\"" + via.hop.stringValue() + '"';
   }
   if (via.label.label().isLabel()) {
      text += ",\"label\":" + std::to_string(via.label.raw());
   }
   return text + ",\"weight\":" + std::to_string(via.weight) + "}";
}

}  // namespace

std::string viasText(std::vector<Vault::Fib::Via> const* vias) {
   std::string text = "[";
   for (auto const& via : vias != nullptr ? *vias : std::vector<Vault::Fib::Via>()) {
      text += (text.size() > 1 ? "," : "") + viaText(via);
   }
   return text + "]";
}

}  // namespace follow
