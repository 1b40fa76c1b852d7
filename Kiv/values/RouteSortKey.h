#pragma once

#include "Lumen/IpGenPrefix.h"
#include "Zam/Value.h"

#include <compare>

namespace Kiv {

// The place of a configured route in saved configuration. Orders by address bytes, then length, then preference; the
// address family is not compared, since the routes of one list are of one family. Equality compares both attributes.
struct RouteSortKey : Zam::ValueType {
   Lumen::IpGenPrefix prefix;
   U8 preference = 0;

   static constexpr auto zamDescription() {
      return Zam::describe<RouteSortKey>("Kiv::RouteSortKey", Zam::attribute("prefix", &RouteSortKey::prefix),
                                         Zam::attribute("preference", &RouteSortKey::preference));
   }
   friend constexpr std::weak_ordering operator<=>(RouteSortKey const& a, RouteSortKey const& b) noexcept {
      auto const byPrefix = a.prefix.byAddressAndLength(b.prefix);
      return byPrefix != 0 ? byPrefix : a.preference <=> b.preference;
   }
   // A word that orders as the keys do, but for those that agree in their first 64 bits.
   constexpr U64 sortWord() const noexcept {
      U64 word = 0;
      auto const bytes = prefix.addressBytes();
      for (std::size_t i = 0; i < sizeof(word); ++i) {
         word = word << 8 | bytes[i];
      }
      return prefix.isNullPrefix() ? ~U64{0} : word;
   }
};

}  // namespace Kiv
