#include "Kiv/KivIpRouteCliHelper.h"
#include "programs/kiv/Configure.h"
#include "programs/kiv/StaticRouteClauses.h"
#include "state/State.h"

#include <algorithm>
#include <limits>
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

// What agents added may be of a kind that no command adds a via to. What is configured lasts, whoever began it.
void makeConfigured(Routing::RouteList& list, Request const& request) {
   Routing::RouteKey const key{{},
                               Lumen::IpGenPrefix::parse(*request.value(prefix)),
                               static_cast<U8>(numberOf(request, preference, defaultPreference))};
   Routing::Route* const route = list.route(key);
   if (route != nullptr && route->routeType() == Routing::RouteType::l2NexthopGroup) {
      throw refusal(*request.value(prefix), request, "is a layer-2 nexthop group route");
   }
   if (route != nullptr) {
      route->nonPersistentIs(false);
   }
}

void addRoute(state::State& state, Request const& request, AddressFamily family) {
   auto const helper = Kiv::ipRouteCliPluginHelperFactory(hardwareStatus(state, family));
   checkDestination(*helper, request, family);
   state::VrfState& own = vrfOf(state, request);
   checkVrfs(request, own);
   makeConfigured(own.staticRoutes.of(family), request);
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

// What is said fits, and what is not said fits anything.
class Fits {
 public:
   explicit Fits(Request const& request, AddressFamily family)
       : request_(request),
         type_(typeOf(request)),
         hop_(Lumen::IpGenAddr::parse(hopOf(request, family))) {}

   // Whether the words tell vias apart, and not just routes.
   bool saysVia() const { return says(ofVias) || says(ofAnyWay); }
   // Whether they say where the route leads.
   bool saysWhere() const { return saysVia() || type_ != Routing::RouteType::forward; }

   // The route; its vias are looked at one by one.
   bool operator()(Routing::Route const& route) const {
      return fits(tag, route.tag()) && fits(leakVrf, route.leakToVrf().bytes()) &&
             (!request_.has(ribBypass) || route.ribBypass()) && fitsType(route);
   }

   bool operator()(Routing::Route const& route, Routing::Via const& via, Routing::RouteMetric viaMetric) const {
      auto const* const viaName = route.viaNextHopName().find(via);
      return fits(egressVrf, via.egressVrf.bytes()) && fits(interface, via.intfId.name()) &&
             (!request_.has(nexthop) || via.hop == hop_) && fits(label, via.mplsLabel.value()) &&
             (!request_.has(trackBfd) || route.bfdTracked().contains(via)) && fitsVtep(via) &&
             fits(metric, viaMetric) && fits(name, viaName != nullptr ? viaName->bytes() : "");
   }

   // Whether it is the very via that the words would configure.
   bool isExactly(Routing::Via const& via) const {
      return via.hop == hop_ && via.intfId.isValid() == request_.has(interface) &&
             via.mplsLabel.isLabel() == request_.has(label) &&
             via.egressVrf.isDefaultVrf() != request_.has(egressVrf) && via.vtepAddr.isEmpty() != request_.has(vtep) &&
             (via.vni != Lumen::Vni()) == request_.has(vni) &&
             via.localIntf.isValid() == request_.has(localInterface) &&
             via.vtepSipValidation == request_.has(sourceVtepValidation);
   }

 private:
   static constexpr std::array ofVias{egressVrf, interface, nexthop,   label,          trackBfd,
                                      vtep,      vni,       routerMac, localInterface, sourceVtepValidation};
   static constexpr std::array ofAnyWay{metric, name};

   template <std::size_t Size>
   bool says(std::array<std::string_view, Size> const& clauses) const {
      return std::ranges::any_of(clauses, [&](auto clause) { return request_.has(clause); });
   }
   bool fits(std::string_view clause, std::string_view value) const {
      auto const& word = request_.value(clause);
      return !word || *word == value;
   }
   bool fits(std::string_view clause, U32 value) const {
      auto const& word = request_.value(clause);
      return !word || checkedNumber(*word) == value;
   }

   bool fitsType(Routing::Route const& route) const {
      if (route.routeType() != type_ && type_ != Routing::RouteType::forward) {
         return false;
      }
      switch (route.routeType()) {
         case Routing::RouteType::forward:
         case Routing::RouteType::l2NexthopGroup:
            return true;
         case Routing::RouteType::drop:
            return !says(ofVias) && !request_.has(metric) && fits(name, route.dropNextHopName().bytes());
         case Routing::RouteType::nexthopGroup:
            return !says(ofVias) && !request_.has(name) && fits(metric, route.nexthopGroupMetric()) &&
                   fits(nexthopGroup, route.nexthopGroupName().bytes());
         case Routing::RouteType::routeCacheConnected:
            return !saysVia();
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

// Whether only the very via that the words would configure is meant, or every one that fits.
enum class Which { exact, allFitting };

void dropVia(Routing::Route& route, Routing::Via const& via) {
   route.viaDel(via);
   route.viaNextHopNameDel(via);
   route.bfdTrackedDel(via);
}

// Takes vias away, and what is kept for them. Whether there were any.
bool removeVias(Routing::Route& route, Fits const& fits, Which which) {
   std::vector<Routing::Via> fitting;
   for (auto const& [via, viaMetric] : route.via()) {
      if (fits(route, via, viaMetric) && (which == Which::allFitting || fits.isExactly(via))) {
         fitting.push_back(via);
      }
   }
   for (Routing::Via const& via : fitting) {
      dropVia(route, via);
   }
   bool const keepsVtep =
       std::ranges::any_of(route.via(), [](auto const& entry) { return !entry.key.vtepAddr.isEmpty(); });
   route.ribBypassIs(route.ribBypass() && keepsVtep);
   return !fitting.empty();
}

// Whether anything of the route was meant, and is gone.
bool removeFrom(Routing::RouteList& list, Routing::RouteKey const& key, Fits const& fits, Which which) {
   Routing::Route* const route = list.route(key);
   if (route == nullptr || !fits(*route)) {
      return false;
   }
   bool const hasVias = !route->via().empty();
   if (hasVias && fits.saysVia()) {
      if (!removeVias(*route, fits, which)) {
         return false;
      }
   } else if (fits.saysVia() && route->routeType() == Routing::RouteType::forward) {
      return false;
   }
   if (!hasVias || !fits.saysVia() || route->via().empty()) {
      list.routeDel(key);
   }
   return true;
}

void removeRoute(state::State& state, Request const& request, AddressFamily family) {
   auto const helper = Kiv::ipRouteCliPluginHelperFactory(hardwareStatus(state, family));
   checkDestination(*helper, request, family);
   Routing::RouteList& list = vrfOf(state, request).staticRoutes.of(family);
   Fits const fits(request, family);
   auto const prefixKey = [&](U32 number) {
      return Routing::RouteKey{{}, Lumen::IpGenPrefix::parse(*request.value(prefix)), static_cast<U8>(number)};
   };
   // The commands that are shown leave the usual preference out, and each of them means one via or route only.
   constexpr U32 largest = std::numeric_limits<Routing::RoutePreference>::max();
   U32 const said = numberOf(request, preference);
   U32 const usual = said != 0 ? said : defaultPreference;
   bool found = fits.saysWhere() && removeFrom(list, prefixKey(usual), fits, Which::exact);
   if (!found) {
      for (U32 number = said; number <= (said != 0 ? said : largest); ++number) {
         found = removeFrom(list, prefixKey(number), fits, Which::allFitting) || found;
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
