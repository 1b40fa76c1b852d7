#include "Kiv/KivIpRouteCliHelper.h"
#include "programs/kiv/Configure.h"
#include "programs/kiv/Families.h"
#include "programs/kiv/StaticRouteClauses.h"
#include "state/State.h"

#include <algorithm>
#include <limits>

namespace kiv {
namespace {

using Lumen::AddressFamily;

constexpr U32 defaultPreference = 1;

struct ClearArguments {
   std::string interface {};
};

// Empty when it was not given.
Zam::String textOf(std::optional<std::string> const& given) {
   return Zam::String(given.value_or(""));
}
template <class T>
Zam::String textOf(std::optional<T> const& given) {
   return given ? Zam::String(given->stringValue()) : Zam::String();
}

state::VrfState& vrfOf(state::State& state, StaticRouteArguments const& asked) {
   auto const found =
       std::ranges::find_if(state.vrfs, [&](auto const& known) { return std::string_view(known.name) == asked.vrf; });
   if (found == state.vrfs.end()) {
      throw Refusal(asked.vrf, "no such VRF");
   }
   if (!state::isConfigWord(asked.vrf)) {
      throw Refusal(asked.vrf, "no configuration can name a VRF that has blanks in its name");
   }
   return *found;
}

Routing::RouteType typeOf(StaticRouteArguments const& asked) {
   return asked.drop           ? Routing::RouteType::drop
          : asked.nexthopGroup ? Routing::RouteType::nexthopGroup
          : asked.cached       ? Routing::RouteType::routeCacheConnected
                               : Routing::RouteType::forward;
}

// A next hop that is all zeros is none, but in another VRF, where it stands for whatever that VRF has.
std::optional<Lumen::IpGenAddr> hopOf(StaticRouteArguments const& asked, AddressFamily family) {
   bool const isZero = asked.nexthop && asked.nexthop->isZero();
   if (isZero && !asked.egressVrf) {
      throw Refusal(asked.nexthop->stringValue(), "is no next hop");
   }
   if (asked.egressVrf && (!asked.nexthop || isZero)) {
      return Lumen::IpGenAddr::parse(family == AddressFamily::ipv6 ? "::" : "0.0.0.0");
   }
   return asked.nexthop;
}

void checkVrfs(StaticRouteArguments const& asked, state::VrfState const& own) {
   for (auto const& name : {asked.egressVrf, asked.leakVrf}) {
      if (name && *name == own.name.bytes()) {
         throw Refusal(*name, "is the route's own VRF");
      }
   }
}

void checkDestination(Kiv::IpRouteCliPluginHelper& helper, Destination const& destination, AddressFamily family) {
   constexpr bool unicastOnly = true;
   if (family == AddressFamily::ipv4 && !helper.isValidPrefix(Zam::String(destination.word), unicastOnly)) {
      throw Refusal(destination.word, std::string(helper.errorMsg()));
   }
}

Zam::Ptr<Routing::Hardware::Status const> hardwareStatus(state::State const& state, AddressFamily family) {
   auto const status = Zam::makePtr<Routing::Hardware::Status>();
   status->maxViasIs(family == AddressFamily::ipv6 ? state.maxVias6 : state.maxVias);
   return status;
}

Routing::RouteKey keyOfRoute(StaticRouteArguments const& asked, U32 preference) {
   return {{}, asked.prefix.prefix, static_cast<U8>(preference)};
}

// What agents added may be of a kind that no command adds a via to. What is configured lasts, whoever began it.
void makeConfigured(Routing::RouteList& list, StaticRouteArguments const& asked) {
   Routing::Route* const route = list.route(keyOfRoute(asked, asked.preference.value_or(defaultPreference)));
   if (route != nullptr && route->routeType() == Routing::RouteType::l2NexthopGroup) {
      throw Refusal(asked.prefix.word, "is a layer-2 nexthop group route");
   }
   if (route != nullptr) {
      route->nonPersistentIs(false);
   }
}

template <class Family>
void addRoute(state::State& state, StaticRouteArguments const& asked) {
   auto const helper = Kiv::ipRouteCliPluginHelperFactory(hardwareStatus(state, Family::family));
   checkDestination(*helper, asked.prefix, Family::family);
   state::VrfState& own = vrfOf(state, asked);
   checkVrfs(asked, own);
   makeConfigured(own.staticRoutes.of(Family::family), asked);
   auto const& list = Family::family == AddressFamily::ipv6 ? own.staticRoutes.ip6 : own.staticRoutes.ip;
   auto const local = asked.localInterface ? Lumen::IntfId::named(*asked.localInterface) : Lumen::IntfId();
   bool const isDone = helper->manageRoute(
       list, Zam::String(own.name.bytes()), Zam::String(asked.prefix.word),
       static_cast<U16>(asked.preference.value_or(defaultPreference)), typeOf(asked), textOf(asked.leakVrf),
       textOf(asked.interface), asked.label.has_value(), asked.label.value_or(0), asked.routerMac.has_value(),
       asked.vni.value_or(0), textOf(asked.routerMac), asked.ribBypass, textOf(asked.vtep), asked.sourceVtepValidation,
       asked.tag.value_or(0), textOf(asked.egressVrf), textOf(hopOf(asked, Family::family)), textOf(asked.name),
       asked.trackBfd, textOf(asked.nexthopGroup), local, asked.metric.value_or(0));
   if (!isDone) {
      throw Refusal(asked.prefix.word, std::string(helper->errorMsg()));
   }
}

// What is said fits, and what is not said fits anything.
class Fits {
 public:
   Fits(StaticRouteArguments const& asked, AddressFamily family)
       : asked_(asked),
         type_(typeOf(asked)),
         hop_(hopOf(asked, family).value_or(Lumen::IpGenAddr())) {}

   // Whether the words tell vias apart, and not just routes.
   bool saysVia() const { return saysWay() || asked_.metric || asked_.name; }
   // Whether they say where the route leads, as those do that configure one.
   bool saysWhere() const {
      return type_ != Routing::RouteType::forward || asked_.egressVrf || asked_.interface || asked_.nexthop ||
             asked_.vtep;
   }

   // The route; its vias are looked at one by one.
   bool operator()(Routing::Route const& route) const {
      return fits(asked_.tag, route.tag()) && fits(asked_.leakVrf, route.leakToVrf().bytes()) && fitsType(route);
   }

   bool operator()(Routing::Route const& route, Routing::Via const& via, Routing::RouteMetric viaMetric) const {
      auto const* const viaName = route.viaNextHopName().find(via);
      return fits(asked_.egressVrf, via.egressVrf.bytes()) && fits(asked_.interface, via.intfId.name()) &&
             (!asked_.nexthop || via.hop == hop_) && fits(asked_.label, via.mplsLabel.value()) &&
             (!asked_.trackBfd || route.bfdTracked().contains(via)) && fitsVtep(route, via) &&
             fits(asked_.metric, viaMetric) && fits(asked_.name, viaName != nullptr ? viaName->bytes() : "");
   }

   // Whether it is the very via that the words would configure.
   bool isExactly(Routing::Via const& via) const {
      return via.hop == hop_ && via.intfId.isValid() == asked_.interface.has_value() &&
             via.mplsLabel.isLabel() == asked_.label.has_value() &&
             via.egressVrf.isDefaultVrf() != asked_.egressVrf.has_value() &&
             via.vtepAddr.isEmpty() != asked_.vtep.has_value() && (via.vni != Lumen::Vni()) == asked_.vni.has_value() &&
             (via.routerMac != Lumen::EthAddr()) == asked_.routerMac.has_value() &&
             via.localIntf.isValid() == asked_.localInterface.has_value() &&
             via.vtepSipValidation == asked_.sourceVtepValidation;
   }

 private:
   // What only a forwarding route's vias have.
   bool saysWay() const {
      return asked_.egressVrf || asked_.interface || asked_.nexthop || asked_.label || asked_.trackBfd || asked_.vtep ||
             asked_.vni || asked_.routerMac || asked_.localInterface || asked_.ribBypass || asked_.sourceVtepValidation;
   }
   template <class T, class Value>
   static bool fits(std::optional<T> const& said, Value const& value) {
      return !said || *said == value;
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
            return !saysWay() && !asked_.metric && fits(asked_.name, route.dropNextHopName().bytes());
         case Routing::RouteType::nexthopGroup:
            return !saysWay() && !asked_.name && fits(asked_.metric, route.nexthopGroupMetric()) &&
                   fits(asked_.nexthopGroup, route.nexthopGroupName().bytes());
         case Routing::RouteType::routeCacheConnected:
            return !saysVia();
      }
      return false;
   }

   // The bypass of the RIB is kept for the route, and is that of its vias over VXLAN.
   bool fitsVtep(Routing::Route const& route, Routing::Via const& via) const {
      return fits(asked_.vtep, via.vtepAddr) && fits(asked_.vni, via.vni.value()) &&
             fits(asked_.routerMac, via.routerMac) && fits(asked_.localInterface, via.localIntf.name()) &&
             (!asked_.ribBypass || (route.ribBypass() && !via.vtepAddr.isEmpty())) &&
             (!asked_.sourceVtepValidation || via.vtepSipValidation);
   }

   StaticRouteArguments const& asked_;
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

template <class Family>
void removeRoute(state::State& state, StaticRouteArguments const& asked) {
   auto const helper = Kiv::ipRouteCliPluginHelperFactory(hardwareStatus(state, Family::family));
   checkDestination(*helper, asked.prefix, Family::family);
   Routing::RouteList& list = vrfOf(state, asked).staticRoutes.of(Family::family);
   Fits const fits(asked, Family::family);
   // The commands that are shown leave the usual preference out, and each of them means one via or route only.
   constexpr U32 largest = std::numeric_limits<Routing::RoutePreference>::max();
   U32 const usual = asked.preference.value_or(defaultPreference);
   bool found = fits.saysWhere() && removeFrom(list, keyOfRoute(asked, usual), fits, Which::exact);
   if (!found) {
      for (U32 number = asked.preference.value_or(0); number <= asked.preference.value_or(largest); ++number) {
         found = removeFrom(list, keyOfRoute(asked, number), fits, Which::allFitting) || found;
      }
   }
   if (!found) {
      throw Refusal(asked.prefix.word, "no such route");
   }
}

template <class Family>
void clearInterface(state::State& state, ClearArguments const& asked) {
   Kiv::ClearIntfRoutesAndViasHelper const helper;
   for (state::VrfState& cleared : state.vrfs) {
      helper.clearIntfRoutesAndViasHelper(
          Family::family == AddressFamily::ipv6 ? cleared.staticRoutes.ip6 : cleared.staticRoutes.ip,
          Zam::String(asked.interface));
   }
}

constexpr auto clearClauses = clauses(clause<&ClearArguments::interface, ConfigInterface>(
    {.keyword = "interface", .help = "through this interface", .required = true}));

// What carries a command out is said once for all of them.
template <auto Configure, class Clauses>
Command changing(std::string_view words, std::string_view help, Clauses const& clauses) {
   return configuration<Configure>(words, help, clauses, changeConfiguration);
}

}  // namespace

std::span<Command const> staticRouteCommands() {
   static auto const table = std::to_array<Command>({
       changing<addRoute<Ip4>>("ip route", "configure an IPv4 static route", ipStaticRouteClauses),
       changing<addRoute<Ip6>>("ipv6 route", "configure an IPv6 static route", ipv6StaticRouteClauses),
       changing<removeRoute<Ip4>>("no ip route", "take an IPv4 static route away", noIpStaticRouteClauses),
       changing<removeRoute<Ip6>>("no ipv6 route", "take an IPv6 static route away", noIpv6StaticRouteClauses),
       changing<clearInterface<Ip4>>("clear ip route", "take IPv4 static routes away", clearClauses),
       changing<clearInterface<Ip6>>("clear ipv6 route", "take IPv6 static routes away", clearClauses),
   });
   return table;
}

}  // namespace kiv
