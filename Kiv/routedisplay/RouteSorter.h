#pragma once

#include "Kiv/routedisplay/KernelUnprogrammedRouteCounterSm.h"
#include "Kiv/routedisplay/RouteSorterInputs.h"
#include "Kiv/selection/Selection.h"
#include "Zam/Export.h"

#include <optional>
#include <utility>

namespace cliprint {
class RendererV2;
}

namespace Kiv {

struct TableFacts;

// The engine behind "show ip route" and its kin: one object per VRF and command. Made by the factory with its inputs
// stored and no work done; handleInitialized selects and orders the routes; printRoutes writes them. After the
// selection nothing reads the shared FEC tables again, so one output agrees with itself while the tables change
// underneath.
//
// It owns the FECs and the selection, and shows the one through the other; what each of them does is in its own folder.
// Runs on one thread, under the runtime's activity lock where the process has other activities. Inputs are held until
// the sorter goes. Values out of range in the shared tables raise Zam::RangeError.
template <class Family>
class RouteSorterOf : public Zam::PtrInterface {
 public:
   using Inputs = RouteSorterInputs<Family>;
   using Prefix = typename Family::Prefix;
   using Route = typename Family::Route;
   using SortedRoutes = Kiv::SortedRoutes<Family>;

   ~RouteSorterOf() override;

   Inputs const& inputs() const noexcept { return inputs_; }
   bool initialized() const noexcept { return initialized_; }

   // Builds the selection; the runtime calls it once, when construction is complete.
   void handleInitialized();

   // Once per sorter: the default route is taken out of the selection when it is printed. Writes the whole output to
   // the file descriptor in format 1 (text) or 2 (one JSON document). True when it is complete; false when the user
   // interrupted it, or when the output could not be written or some route has more vias than are shown, which
   // outputError() tells.
   bool printRoutes(U32 fd, U32 fmt, bool printVrf);
   // The errno of the write that ended the last output, EOVERFLOW when vias were left out of it, 0 when neither was.
   S32 outputError() const noexcept { return outputError_; }

   Zam::String legend() const;
   // The five columns in front of a selected route: hardware marker, code and kernel marker; blanks for any other
   // prefix.
   Zam::String protocolString(Prefix const& prefix) const;
   // The one route that a longest-match request selected, or the null prefix; on any other request an assertion fails.
   Prefix longestPrefixMatch() const;

   // The routes to show, in prefix order.
   SortedRoutes const& sortedRoute() const noexcept { return selection_.routes(); }
   U32 sortedRoutes() const noexcept { return static_cast<U32>(sortedRoute().size()); }
   void sortedRouteIs(Prefix const& prefix, Route const& route) { selection_.routes().insertOrReplace(prefix, route); }
   bool sortedRouteDel(Prefix const& prefix) { return selection_.routes().erase(prefix); }
   void sortedRouteDelAll() { selection_.routes().clear(); }

   // How many routes the filter let through.
   U32 selectedRoutes() const noexcept { return selection_.selectedRoutes(); }
   bool isPrintable(Route const& route) const { return selection_.isPrintable(route); }

   // The FEC cache; null for a FEC that is not in it.
   FecCache const& fecs() const noexcept { return fecs_; }
   Zam::Ptr<CachedFec> fec(Vault::Fib::FecId fecId) const { return fecs_.fec(fecId); }
   bool fecHas(Vault::Fib::FecId fecId) const { return fecs_.fecHas(fecId); }
   void fecIs(Zam::Ptr<CachedFec> const& fec) { fecs_.fecIs(fec); }
   // A new FEC in the cache, like that one but for its id: what is changed in it is changed for no route that has, or
   // resolves through, the other. Null for a FEC that is not in the cache.
   Zam::Ptr<CachedFec> fecCopy(Vault::Fib::FecId fecId) { return fecs_.fecCopy(fecId); }
   bool fecDel(Vault::Fib::FecId fecId) { return fecs_.fecDel(fecId); }
   void fecDelAll() { fecs_.fecDelAll(); }

   // Some FEC that was copied, for a hidden route too, is of IPv6 or has such a next hop.
   bool hasV6Nexthop() const noexcept { return fecs_.hasV6Nexthop(); }

   void kernelUnprogrammedRouteCounterSmIs();
   void kernelUnprogrammedRouteCounterSmDel() { kernelUnprogrammedRouteCounterSm_.reset(); }

 protected:
   explicit RouteSorterOf(Inputs inputs);

 private:
   static FecSources fecSources(Inputs const& inputs);
   static RouteTables<Family> routeTables(Inputs const& inputs);
   static RouteRequest<Family> routeRequest(Inputs const& inputs);
   void buildNexthopGroupIdToName();
   TableFacts tableFacts() const;
   bool kernelUnprogrammed() const;
   U32 tableSize() const;
   bool formatOutput(cliprint::RendererV2& renderer);

   Inputs inputs_;
   bool initialized_ = false;
   S32 outputError_ = 0;
   FecCache fecs_;
   Selection<Family> selection_;
   UnprogrammedRouteCountByVrf unprogrammedRouteCountByVrf_;
   std::optional<KernelUnprogrammedRouteCounterSm> kernelUnprogrammedRouteCounterSm_;
};

extern template class KIV_EXPORT RouteSorterOf<Ipv4>;
extern template class KIV_EXPORT RouteSorterOf<Ipv6>;

class KIV_EXPORT RouteSorter final : public RouteSorterOf<Ipv4> {
 public:
   explicit RouteSorter(Inputs inputs) : RouteSorterOf(std::move(inputs)) {}
   ~RouteSorter() override;
   std::string_view fwkType() const noexcept override { return Ipv4::sorterName; }
};

class KIV_EXPORT Route6Sorter final : public RouteSorterOf<Ipv6> {
 public:
   explicit Route6Sorter(Inputs inputs) : RouteSorterOf(std::move(inputs)) {}
   ~Route6Sorter() override;
   std::string_view fwkType() const noexcept override { return Ipv6::sorterName; }
};

// The factories store the inputs, as a whole or one by one in their order; the caller, or the type runtime, then calls
// handleInitialized.
KIV_EXPORT Zam::Ptr<RouteSorter> routeSorterFactory(RouteSorter::Inputs inputs);
KIV_EXPORT Zam::Ptr<Route6Sorter> route6SorterFactory(Route6Sorter::Inputs inputs);

template <class... Arguments>
requires(sizeof...(Arguments) > 1) Zam::Ptr<RouteSorter> routeSorterFactory(Arguments&&... arguments) {
   return routeSorterFactory(RouteSorter::Inputs::fromArguments(std::forward<Arguments>(arguments)...));
}
template <class... Arguments>
requires(sizeof...(Arguments) > 1) Zam::Ptr<Route6Sorter> route6SorterFactory(Arguments&&... arguments) {
   return route6SorterFactory(Route6Sorter::Inputs::fromArguments(std::forward<Arguments>(arguments)...));
}

}  // namespace Kiv
