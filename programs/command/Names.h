#pragma once

#include "state/Inputs.h"

#include <string>
#include <string_view>
#include <vector>

// What parameters are called now: the names that a state has for what a kind stands for.
namespace kiv {

enum class Named { nothing, vrf, interface, nexthopGroup, ipPrefix, ip6Prefix, file };

struct NamesQuery {
   Named named = Named::nothing;
   std::string_view partial{};  // only names that begin like this
   std::string_view vrf{};      // whose prefixes
};

struct Name {
   std::string name;
   std::string help{};
};

// More prefixes than this are not listed.
inline constexpr std::size_t mostPrefixes = 20;

// In order.
std::vector<Name> namesIn(state::Inputs& inputs, NamesQuery const& query);
std::vector<Name> fileNames(std::string_view partial);

}  // namespace kiv
