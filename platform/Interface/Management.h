#pragma once

#include "Lumen/IntfId.h"

#include <string_view>

// Management interfaces carry the box's own traffic; they go by their names.
namespace Interface {

inline constexpr std::string_view managementPrefix = "Management";

inline bool isManagement(Lumen::IntfId const& intfId) {
   return intfId.name().starts_with(managementPrefix);
}

}  // namespace Interface
