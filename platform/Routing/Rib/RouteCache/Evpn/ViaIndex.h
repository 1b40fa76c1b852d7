#pragma once

#include "Zam/Error.h"
#include "Zam/Int.h"

#include <compare>

namespace Routing::Rib::RouteCache::Evpn {

// The place of a via in its FEC, 0 to 31; a RangeError above.
class ViaIndex {
 public:
   static constexpr U32 min = 0;
   static constexpr U32 max = 31;

   constexpr ViaIndex() noexcept = default;
   explicit constexpr ViaIndex(std::size_t value) : value_(static_cast<U8>(value)) {
      if (value > max) {
         throw Zam::RangeError(
             "Routing::Rib::RouteCache::Evpn::ViaIndex::value < Routing::Rib::RouteCache::Evpn::ViaIndex::min or > "
             "Routing::Rib::RouteCache::Evpn::ViaIndex::max not allowed");
      }
   }

   constexpr U8 value() const noexcept { return value_; }
   constexpr auto operator<=>(ViaIndex const&) const noexcept = default;

 private:
   U8 value_ = 0;
};

}  // namespace Routing::Rib::RouteCache::Evpn
