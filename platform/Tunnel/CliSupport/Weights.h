#pragma once

#include "Zam/Int.h"
#include "Zam/String.h"

#include <string>
#include <vector>

namespace Tunnel::CliSupport {

// What one of several ways gets of the traffic, as displays show it: "2/5".
inline std::string weightText(std::string const& weight, U64 sum) {
   return weight + "/" + std::to_string(sum);
}

// The text of each way, in their order; empty where the ways weigh the same.
template <class Way>
std::vector<Zam::String> weightTexts(std::vector<Way> const& ways) {
   U64 sum = 0;
   for (auto const& way : ways) {
      sum += way.weight;
   }
   std::vector<Zam::String> texts(ways.size());
   for (std::size_t i = 0; sum > ways.size() && i < ways.size(); ++i) {
      texts[i] = weightText(std::to_string(ways[i].weight), sum);
   }
   return texts;
}

}  // namespace Tunnel::CliSupport
