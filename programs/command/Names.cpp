#include "programs/command/Names.h"

#include <algorithm>
#include <filesystem>

namespace kiv {
namespace {

class Matching {
 public:
   explicit Matching(std::string_view partial) : partial_(partial) {}

   void add(std::string_view name, std::string_view help = {}) {
      if (name.starts_with(partial_)) {
         names_.push_back({std::string(name), std::string(help)});
      }
   }
   std::vector<Name> inOrder() {
      std::ranges::sort(names_, {}, &Name::name);
      return std::move(names_);
   }

 private:
   std::string_view partial_;
   std::vector<Name> names_;
};

template <class Routes>
std::vector<Name> prefixesOf(Routes const& routes, std::string_view partial) {
   Matching found(partial);
   if (routes) {
      routes->walk([&](auto const& route) { found.add(route.prefix.stringValue()); });
   }
   auto names = found.inOrder();
   if (names.size() > mostPrefixes) {
      names.clear();
   }
   return names;
}

std::vector<Name> prefixes(state::Inputs& inputs, NamesQuery const& query) {
   auto const* const vrf = inputs.vrf(query.vrf);
   if (vrf == nullptr) {
      return {};
   }
   return query.named == Named::ipPrefix ? prefixesOf(inputs.routes(vrf->id), query.partial)
                                         : prefixesOf(inputs.routes6(vrf->id), query.partial);
}

}  // namespace

std::vector<Name> namesIn(state::Inputs& inputs, NamesQuery const& query) {
   Matching found(query.partial);
   switch (query.named) {
      case Named::vrf:
         for (auto const& vrf : inputs.vrfs()) {
            found.add(vrf.name);
         }
         break;
      case Named::interface:
         for (auto const& [intfId, config] : inputs.allIntfConfig->intfConfig()) {
            found.add(intfId.name(), config.description);
         }
         break;
      case Named::nexthopGroup:
         if (inputs.nexthopGroupEntryStatus) {
            inputs.nexthopGroupEntryStatus->walk([&](std::string_view name, U32) { found.add(name); });
         }
         break;
      case Named::ipPrefix:
      case Named::ip6Prefix:
         return prefixes(inputs, query);
      case Named::nothing:
      case Named::file:
         break;
   }
   return found.inOrder();
}

std::vector<Name> fileNames(std::string_view partial) {
   std::string_view const folder = partial.substr(0, partial.rfind('/') + 1);
   Matching found(partial);
   std::error_code ignored;
   for (auto const& entry : std::filesystem::directory_iterator(folder.empty() ? "." : folder, ignored)) {
      found.add(std::string(folder) + entry.path().filename().string() + (entry.is_directory(ignored) ? "/" : ""));
   }
   return found.inOrder();
}

}  // namespace kiv
