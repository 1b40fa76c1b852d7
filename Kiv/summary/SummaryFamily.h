#pragma once

#include "Kiv/common/RouteTypeStrings.h"
#include "Lumen/Ip6Prefix.h"
#include "Lumen/Prefix.h"
#include "Routing/RouteType.h"

// What differs between the two families when routes are counted.
namespace Kiv {

struct SummaryIpv4 {
   using RouteType = Routing::Fib::RouteType;

   static constexpr U8 largestType = maxRouteType;
   static constexpr U8 largestMask = Lumen::Prefix::maxLength;
   static constexpr char const* loadInternalName = "void Kiv::RouteSummary::loadInternalStructures()";

   static constexpr bool isOspf(RouteType type) {
      return type >= RouteType::ospfIntraArea && type <= RouteType::ospfNssaExternalType2;
   }
};

struct SummaryIpv6 {
   using RouteType = Routing6::Fib::RouteType;

   static constexpr U8 largestType = maxRoute6Type;
   static constexpr U8 largestMask = Lumen::Ip6Prefix::maxLength;
   static constexpr char const* loadInternalName = "void Kiv::Route6Summary::loadInternalStructures()";

   // The one type of OSPF has the total for its own category.
   static constexpr bool isOspf(RouteType) { return false; }
};

}  // namespace Kiv
