#pragma once

#include "Zam/Int.h"
#include "Zam/Strep.h"

#include <array>
#include <ostream>
#include <string_view>

namespace Lumen {

// The numbers are the contract: counts per family in shared memory are keyed by them.
enum class AddressFamily : U8 { unknown = 0, ipv4 = 1, ipv6 = 2 };

constexpr auto zamEnumerators(AddressFamily) {
   using enum AddressFamily;
   return std::to_array<Zam::Enumerator<AddressFamily>>({{unknown, "unknown"}, {ipv4, "ipv4"}, {ipv6, "ipv6"}});
}

// Empty for a number that names no family.
constexpr std::string_view stringValue(AddressFamily family) noexcept {
   return Zam::enumName(family);
}

inline std::ostream& operator<<(std::ostream& out, AddressFamily family) {
   return out << Zam::valueToStrep(family);
}

}  // namespace Lumen
