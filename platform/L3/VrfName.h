#pragma once

#include "Zam/String.h"

#include <functional>

namespace L3 {

// The name of a VRF, at most 100 bytes; a fresh one names the default VRF.
class VrfName : public Zam::BoundedString<100> {
 public:
   static constexpr std::string_view defaultVrf = "default";

   using Zam::BoundedString<100>::BoundedString;
   VrfName() : VrfName(defaultVrf) {}

   bool isDefaultVrf() const noexcept { return bytes() == defaultVrf; }
};

}  // namespace L3

template <>
struct std::hash<L3::VrfName> {
   std::size_t operator()(L3::VrfName const& name) const noexcept { return std::hash<std::string_view>{}(name); }
};
