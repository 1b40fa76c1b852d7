#pragma once

#include "Lumen/IpGenPrefix.h"
#include "Zam/Value.h"

#include <compare>

namespace Routing {

// The administrative distance: of two routes to one prefix the one with the smaller preference wins.
using RoutePreference = U8;
using RouteMetric = U32;

// What tells one configured route from another: a prefix may be configured once per preference.
// Orders by prefix, then by preference.
struct RouteKey : Zam::ValueType {
   Lumen::IpGenPrefix prefix;
   RoutePreference preference = 1;

   static constexpr auto zamDescription() {
      return Zam::describe<RouteKey>("Routing::RouteKey", Zam::attribute("prefix", &RouteKey::prefix),
                                     Zam::attribute("preference", &RouteKey::preference));
   }
   friend constexpr std::strong_ordering operator<=>(RouteKey const& a, RouteKey const& b) noexcept {
      auto const byPrefix = a.prefix <=> b.prefix;
      return byPrefix != 0 ? byPrefix : a.preference <=> b.preference;
   }
};

}  // namespace Routing
