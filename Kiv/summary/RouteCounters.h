#pragma once

#include "Kiv/common/RouteTypeStrings.h"
#include "Kiv/common/Trace.h"
#include "Zam/String.h"

#include <array>

namespace Kiv {

// What one load counts, in arrays, so that a route costs a few additions; applied to the summary once at the end.
// `MaxType` and `MaxMask` are the largest route type and mask length there are.
template <class RouteType, U8 MaxType, U8 MaxMask>
class RouteCounters {
 public:
   U32 staticPersistent = 0;
   U32 staticNonPersistent = 0;
   U32 ospfTotal = 0;
   U32 bgpTotal = 0;
   U32 isisTotal = 0;

   // Neither may be larger than the largest.
   void incrementRoute(RouteType type, U8 maskLength) {
      trace(1, "incrementRoute", "Incrementing ", U32{static_cast<U8>(type)}, " of ", byType_.size(), " of length ",
            U32{maskLength});
      ++byType_[static_cast<U8>(type)];
      ++byMask_[maskLength];
      ++total_;
   }

   template <class Summary>
   void apply(Summary& summary) const {
      trace(1, "apply", "Applying routeTypes");
      for (U32 type = 0; type < byType_.size(); ++type) {
         applyType(summary, static_cast<RouteType>(type));
      }
      for (U32 length = 0; length < byMask_.size(); ++length) {
         if (byMask_[length] != 0) {
            summary.routeCountByMaskInc(length, byMask_[length]);
         }
      }
      summary.totalNumRoutesInc(total_);
      applyOperational(summary, "staticNonPersistent", staticNonPersistent);
      applyOperational(summary, "staticPersistent", staticPersistent);
      applyOperational(summary, "ospfTotal", ospfTotal);
      applyOperational(summary, "bgpTotal", bgpTotal);
      applyOperational(summary, "isisTotal", isisTotal);
   }

 private:
   template <class Summary>
   void applyType(Summary& summary, RouteType type) const {
      if (isReserved(type)) {
         return;
      }
      trace(1, "apply", "Applying routeType", U32{static_cast<U8>(type)});
      char const* const category = routeTypeStringsLookup(type).summaryCategory;
      if (U32 const count = byType_[static_cast<U8>(type)]; count != 0) {
         summary.routeCountByTypeInc(category, count);
      }
   }
   template <class Summary>
   static void applyOperational(Summary& summary, char const* category, U32 count) {
      if (count != 0) {
         summary.routeCountByTypeInc(category, count);
      }
   }

   // Types that have no entry in the route type table on purpose.
   static constexpr bool isReserved(Routing::Fib::RouteType type) {
      return type == Routing::Fib::RouteType::reserved || type == Routing::Fib::RouteType::reserved38;
   }
   static constexpr bool isReserved(Routing6::Fib::RouteType type) {
      return type == Routing6::Fib::RouteType::reserved;
   }

   std::array<U32, MaxType + 1> byType_{};
   std::array<U32, MaxMask + 1> byMask_{};
   U32 total_ = 0;
};

}  // namespace Kiv
