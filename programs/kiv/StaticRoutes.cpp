#include "Kiv/KivIpRouteCliHelper.h"
#include "programs/kiv/Configure.h"
#include "programs/kiv/StaticRouteClauses.h"
#include "programs/state/State.h"

#include <algorithm>
#include <stdexcept>

namespace kiv {
namespace {

using namespace staticClause;  // NOLINT(google-build-using-namespace): this file is about them
using Lumen::AddressFamily;

constexpr U8 defaultPreference = 1;

std::runtime_error refusal(std::string_view word, Request const& request, std::string_view why) {
   return std::runtime_error('"' + std::string(word) + "\": " + std::string(request.command.words) + ": " +
                             std::string(why));
}

// The text that follows a clause, empty when it was not given.
Zam::String textOf(Request const& request, std::string_view clause) {
   return Zam::String(request.value(clause).value_or(""));
}

U32 numberOf(Request const& request, std::string_view clause, U32 unless = 0) {
   auto const& word = request.value(clause);
   return word ? checkedNumber(*word) : unless;
}

state::VrfState& vrfOf(state::State& state, Request const& request) {
   std::string const wanted = request.value(vrf).value_or(std::string(L3::VrfName::defaultVrf));
   auto const found =
       std::ranges::find_if(state.vrfs, [&](auto const& known) { return std::string_view(known.name) == wanted; });
   if (found == state.vrfs.end()) {
      throw refusal(wanted, request, "no such VRF");
   }
   if (!state::isConfigWord(wanted)) {
      throw refusal(wanted, request, "no configuration can name a VRF that has blanks in its name");
   }
   return *found;
}

Routing::RouteType typeOf(Request const& request) {
   return request.has(drop)           ? Routing::RouteType::drop
          : request.has(nexthopGroup) ? Routing::RouteType::nexthopGroup
          : request.has(cached)       ? Routing::RouteType::routeCacheConnected
                                      : Routing::RouteType::forward;
}

// A next hop that is all zeros is none, but in another VRF, where it stands for whatever that VRF has.
Zam::String hopOf(Request const& request, AddressFamily family) {
   auto const& word = request.value(nexthop);
   bool const isZero = word && Lumen::IpGenAddr::parse(*word).isZero();
   if (isZero && !request.has(egressVrf)) {
      throw refusal(*word, request, "is no next hop");
   }
   if (request.has(egressVrf) && (!word || isZero)) {
      return family == AddressFamily::ipv6 ? "::" : "0.0.0.0";
   }
   return word ? Zam::String(*word) : Zam::String();
}

void checkVrfs(Request const& request, state::VrfState const& own) {
   for (std::string_view const clause : {egressVrf, leakVrf}) {
      if (auto const& name = request.value(clause); name && *name == own.name.bytes()) {
         throw refusal(*name, request, "is the route's own VRF");
      }
   }
}

void checkDestination(Kiv::IpRouteCliPluginHelper& helper, Request const& request, AddressFamily family) {
   constexpr bool unicastOnly = true;
   auto const destination = textOf(request, prefix);
   if (family == AddressFamily::ipv4 && !helper.isValidPrefix(destination, unicastOnly)) {
      throw refusal(destination, request, helper.errorMsg());
   }
}

Zam::Ptr<Routing::Hardware::Status const> hardwareStatus(state::State const& state, AddressFamily family) {
   auto const status = Zam::makePtr<Routing::Hardware::Status>();
   status->maxViasIs(family == AddressFamily::ipv6 ? state.maxVias6 : state.maxVias);
   return status;
}

void addRoute(state::State& state, Request const& request, AddressFamily family) {
   auto const helper = Kiv::ipRouteCliPluginHelperFactory(hardwareStatus(state, family));
   checkDestination(*helper, request, family);
   state::VrfState& own = vrfOf(state, request);
   checkVrfs(request, own);
   auto const& local = request.value(localInterface);
   bool const isDone = helper->manageRoute(
       family == AddressFamily::ipv6 ? own.staticRoutes.ip6 : own.staticRoutes.ip, Zam::String(own.name.bytes()),
       textOf(request, prefix), static_cast<U16>(numberOf(request, preference, defaultPreference)), typeOf(request),
       textOf(request, leakVrf), textOf(request, interface), request.has(label), numberOf(request, label),
       request.has(routerMac), numberOf(request, vni), textOf(request, routerMac), request.has(ribBypass),
       textOf(request, vtep), request.has(sourceVtepValidation), numberOf(request, tag), textOf(request, egressVrf),
       hopOf(request, family), textOf(request, name), request.has(trackBfd), textOf(request, nexthopGroup),
       local ? Lumen::IntfId::named(*local) : Lumen::IntfId(), numberOf(request, metric));
   if (!isDone) {
      throw refusal(*request.value(prefix), request, helper->errorMsg());
   }
}

// What is said fits, and what is not said fits anything. But where the route has the very via that the words would
// configure, it is that one alone which is meant.
class Fits {
 public:
   explicit Fits(Request const& request, AddressFamily family)
       : request_(request),
         type_(typeOf(request)),
         hop_(Lumen::IpGenAddr::parse(hopOf(request, family))) {}

   bool hasWayOut() const {
      return std::ranges::any_of(waysOut, [&](auto clause) { return request_.has(clause); });
   }

   bool operator()(Routing::Route const& route) const {
      return fitsType(route) && fits(tag, route.tag()) && fits(leakVrf, route.leakToVrf().bytes()) &&
             (!request_.has(ribBypass) || route.ribBypass());
   }

   bool isExactly(Routing::Via const& via) const {
      return via.hop == hop_ && via.intfId.isValid() == request_.has(interface) &&
             via.mplsLabel.isLabel() == request_.has(label) &&
             via.egressVrf.isDefaultVrf() != request_.has(egressVrf) && via.vtepAddr.isEmpty() != request_.has(vtep) &&
             (via.vni != Lumen::Vni()) == request_.has(vni) &&
             via.localIntf.isValid() == request_.has(localInterface) &&
             via.vtepSipValidation == request_.has(sourceVtepValidation);
   }

   // Of a route that fits.
   bool operator()(Routing::Route const& route, Routing::Via const& via, Routing::RouteMetric viaMetric) const {
      auto const* const viaName = route.viaNextHopName().find(via);
      return fits(egressVrf, via.egressVrf.bytes()) && fits(interface, via.intfId.name()) &&
             (hop_.isEmpty() || via.hop == hop_) && fits(label, via.mplsLabel.value()) &&
             (!request_.has(trackBfd) || route.bfdTracked().contains(via)) && fitsVtep(via) &&
             fits(metric, viaMetric) && fits(name, viaName != nullptr ? viaName->bytes() : "");
   }

 private:
   static constexpr std::array waysOut{egressVrf, interface, nexthop, label, trackBfd, vtep, metric, name};

   bool fits(std::string_view clause, std::string_view value) const {
      auto const& word = request_.value(clause);
      return !word || *word == value;
   }
   bool fits(std::string_view clause, U32 value) const {
      auto const& word = request_.value(clause);
      return !word || checkedNumber(*word) == value;
   }

   bool fitsType(Routing::Route const& route) const {
      switch (type_) {
         case Routing::RouteType::forward:
            return !hasWayOut() || !route.via().empty();
         case Routing::RouteType::drop:
            return route.routeType() == type_ && fits(name, route.dropNextHopName().bytes());
         case Routing::RouteType::nexthopGroup:
            return route.routeType() == type_ && fits(nexthopGroup, route.nexthopGroupName().bytes()) &&
                   fits(metric, route.nexthopGroupMetric());
         case Routing::RouteType::l2NexthopGroup:
         case Routing::RouteType::routeCacheConnected:
            return route.routeType() == type_;
      }
      return false;
   }

   bool fitsVtep(Routing::Via const& via) const {
      auto const& address = request_.value(vtep);
      auto const& mac = request_.value(routerMac);
      return (!address || via.vtepAddr == Lumen::IpGenAddr::parse(*address)) && fits(vni, via.vni.value()) &&
             (!mac || via.routerMac == Lumen::EthAddr::parse(*mac)) && fits(localInterface, via.localIntf.name()) &&
             (!request_.has(sourceVtepValidation) || via.vtepSipValidation);
   }

   Request const& request_;
   Routing::RouteType type_;
   Lumen::IpGenAddr hop_;
};

// Takes the vias away that fit; what is kept for the vias goes with them. Whether there were any.
bool removeVias(Routing::Route& route, Fits const& fits) {
   std::vector<Routing::Via> fitting;
   for (auto const& [via, viaMetric] : route.via()) {
      if (fits(route, via, viaMetric)) {
         fitting.push_back(via);
      }
   }
   auto const exact = std::ranges::find_if(fitting, [&](auto const& via) { return fits.isExactly(via); });
   if (exact != fitting.end()) {
      fitting = {*exact};
   }
   for (Routing::Via const& via : fitting) {
      route.viaDel(via);
      route.viaNextHopNameDel(via);
      route.bfdTrackedDel(via);
   }
   bool const keepsVtep =
       std::ranges::any_of(route.via(), [](auto const& entry) { return !entry.key.vtepAddr.isEmpty(); });
   route.ribBypassIs(route.ribBypass() && keepsVtep);
   return !fitting.empty();
}

void removeRoute(state::State& state, Request const& request, AddressFamily family) {
   auto const helper = Kiv::ipRouteCliPluginHelperFactory(hardwareStatus(state, family));
   checkDestination(*helper, request, family);
   Routing::RouteList& list = vrfOf(state, request).staticRoutes.of(family);
   Fits const fits(request, family);
   bool const isVia = typeOf(request) == Routing::RouteType::forward && fits.hasWayOut();
   U32 const wanted = numberOf(request, preference);
   bool found = false;
   for (U32 number = wanted; number <= (wanted != 0 ? wanted : 255); ++number) {
      Routing::RouteKey const key{{}, Lumen::IpGenPrefix::parse(*request.value(prefix)), static_cast<U8>(number)};
      Routing::Route* const route = list.route(key);
      if (route == nullptr || !fits(*route) || (isVia && !removeVias(*route, fits))) {
         continue;
      }
      found = true;
      if (!isVia || route->via().empty()) {
         list.routeDel(key);
      }
   }
   if (!found) {
      throw refusal(*request.value(prefix), request, "no such route");
   }
}

void clearInterface(state::State& state, Request const& request, AddressFamily family) {
   Kiv::ClearIntfRoutesAndViasHelper const helper;
   for (state::VrfState& cleared : state.vrfs) {
      helper.clearIntfRoutesAndViasHelper(
          family == AddressFamily::ipv6 ? cleared.staticRoutes.ip6 : cleared.staticRoutes.ip,
          textOf(request, "interface"));
   }
}

}  // namespace

void addIpRoute(state::State& state, Request const& request) {
   addRoute(state, request, AddressFamily::ipv4);
}

void addIpv6Route(state::State& state, Request const& request) {
   addRoute(state, request, AddressFamily::ipv6);
}

void removeIpRoute(state::State& state, Request const& request) {
   removeRoute(state, request, AddressFamily::ipv4);
}

void removeIpv6Route(state::State& state, Request const& request) {
   removeRoute(state, request, AddressFamily::ipv6);
}

void clearIpRouteInterface(state::State& state, Request const& request) {
   clearInterface(state, request, AddressFamily::ipv4);
}

void clearIpv6RouteInterface(state::State& state, Request const& request) {
   clearInterface(state, request, AddressFamily::ipv6);
}

}  // namespace kiv
