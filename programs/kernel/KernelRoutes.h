#pragma once

#include "programs/kernel/Records.h"

#include <set>
#include <tuple>
#include <utility>

namespace kernel {

// The routes of one family, in the order in which the kernel looks at those of one prefix. Its key is the table, the
// prefix, the type of service and the priority; of routes with one key the first is used (IPv4), or each stands for
// itself, but for those with a gateway, which are the legs of one (IPv6).
class KernelRoutes {
 public:
   // All routes of a prefix in one table.
   struct Place {
      U32 table = 0;
      Lumen::IpGenPrefix prefix{};

      auto operator<=>(Place const&) const = default;
   };
   static Place placeOf(KernelRoute const& route) { return {route.table, route.prefix}; }

 private:
   struct InOrder {
      using is_transparent = void;
      bool operator()(KernelRoute const& one, Place const& other) const { return placeOf(one) < other; }
      bool operator()(Place const& one, KernelRoute const& other) const { return one < placeOf(other); }
      bool operator()(KernelRoute const& one, KernelRoute const& other) const {
         auto const key = [](KernelRoute const& r) {
            return std::tie(r.table, r.prefix, r.sourceLength, r.tos, r.metric);
         };
         return key(one) < key(other);
      }
   };
   using Set = std::multiset<KernelRoute, InOrder>;

 public:
   // The next one of a dump.
   void append(KernelRoute route);
   // As a notification tells it, with its NLM_F_* flags.
   void routeIs(KernelRoute route, U16 flags);
   void routeDel(KernelRoute const& route);

   // As a daemon tells it that has one route per prefix and table.
   void onlyRouteIs(KernelRoute route);
   void placeDel(Place const& place);

   // The routes of one place, as they are in the set.
   class At {
    public:
      explicit At(std::pair<Set::const_iterator, Set::const_iterator> const& range) noexcept : range_(range) {}
      Set::const_iterator begin() const noexcept { return range_.first; }
      Set::const_iterator end() const noexcept { return range_.second; }
      bool empty() const noexcept { return begin() == end(); }

    private:
      std::pair<Set::const_iterator, Set::const_iterator> range_;
   };
   At at(Place const& place) const { return At(routes_.equal_range(place)); }
   std::size_t size() const { return routes_.size(); }
   Set::const_iterator begin() const { return routes_.begin(); }
   Set::const_iterator end() const { return routes_.end(); }

 private:
   template <class Matches>
   Set::iterator find(KernelRoute const& like, Matches&& matches) const;
   void replace(Set::iterator place, KernelRoute route);

   Set routes_;
};

}  // namespace kernel
