#pragma once

#include "Zam/Error.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

// The names of nexthop groups: 1 to 127 bytes without blanks and control characters, so that one fits into a row of a
// shared table and on a line of a terminal. Whoever configures a group checks its name.
namespace Routing::NexthopGroup {

inline constexpr std::size_t maxNameLength = 127;

constexpr bool isName(std::string_view name) noexcept {
   // U+0080 to U+009F, which terminals obey, are C2 80 to C2 9F.
   auto const isHighControl = [](unsigned char a, unsigned char b) { return a == 0xc2 && b >= 0x80 && b <= 0x9f; };
   for (std::size_t i = 1; i < name.size(); ++i) {
      if (isHighControl(static_cast<unsigned char>(name[i - 1]), static_cast<unsigned char>(name[i]))) {
         return false;
      }
   }
   return !name.empty() && name.size() <= maxNameLength &&
          std::ranges::all_of(name, [](unsigned char c) { return c > ' ' && c != 0x7f; });
}

// RangeError for what is no name.
constexpr std::string_view checkedName(std::string_view name) {
   if (!isName(name)) {
      throw Zam::RangeError(
          "Routing::NexthopGroup::name without characters, with others than a name's or too many not allowed");
   }
   return name;
}

}  // namespace Routing::NexthopGroup
